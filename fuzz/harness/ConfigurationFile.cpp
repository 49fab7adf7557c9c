#include "harness/ConfigurationFile.h"

#include "harness/Input.h"
#include "harness/Refusal.h"
#include "harness/Silence.h"

#include "common/ConfigurationFiles.h"
#include "support/FreshDirectory.h"

namespace Fuzz
{

void LoadWith(const std::string& prefix, const std::string& file, const std::uint8_t* bytes, std::size_t size,
              const std::function<void()>& load)
{
    const CSilence silence;
    Support::WriteFile(prefix + file, CInput(bytes, size).Rest());
    if (Refused(load))
        const Faultkeeper::Apps::CConfigurationFiles files(prefix);
}

} // namespace Fuzz
