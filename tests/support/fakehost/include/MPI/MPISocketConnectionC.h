#pragma once

#include <MPI/Socket.h>

#include <string>

class BListC;

class MPISocketConnectionC : public Socket
{
public:
    bool SendNotification(const std::string& name, BListC* arguments);
};
