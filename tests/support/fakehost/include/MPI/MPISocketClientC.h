#pragma once

#include <MPI/MPISocketConnectionC.h>

class MPISocketClientC : public MPISocketConnectionC
{
public:
    explicit MPISocketClientC(bool reconnect);
    ~MPISocketClientC() override;

    bool VerifyConnection();
};
