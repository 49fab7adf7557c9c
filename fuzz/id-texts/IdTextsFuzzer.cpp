// Whatever is typed or written as an error's identifier, it is read or refused, and what was read can be
// written and read again.

#include "harness/Expectation.h"
#include "harness/Input.h"
#include "harness/ScratchDirectory.h"

#include "common/text/ErrorNames.h"
#include "support/ConfigurationBuilder.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/Identifiers.h>

#include <Core/Utilities/SplitString.h>

#include <string>
#include <vector>

using namespace Faultkeeper;

namespace
{

const std::string& Prefix()
{
    static const Fuzz::CScratchDirectory directory;
    return directory.Prefix();
}

const CErrorDatabase& Database()
{
    static const CErrorDatabase database(Prefix());
    return database;
}

void CheckSplitting(const std::string& text, int limit)
{
    std::vector<std::string> fields{"from before"};
    Fuzz::Expect(Core::Utilities::SplitString(text, ":", fields, limit), "a separator splits every text");
    Fuzz::Expect(limit <= 0 || fields.size() <= static_cast<std::size_t>(limit),
                 "no more fields than wanted");
    std::string joined;
    for (const std::string& field : fields)
        joined += (&field == &fields.front() ? "" : ":") + field;
    Fuzz::Expect(joined == text, "the fields make the text");
}

/// Names and values of one coordinate: a name that is known is that of its value.
template <typename Value>
void CheckName(const std::string& text, Value (*value)(const std::string&), std::string (*name)(Value))
{
    const Value known = value(text);
    Fuzz::Expect(known == static_cast<Value>(-1) || name(known) == text,
                 "a value has the name that it was found by");
}

void CheckNames(const std::string& text)
{
    CheckName<EModuleIdentifier>(text, TranslateModuleId, TranslateModuleId);
    CheckName<ESubModuleIdentifier>(text, TranslateSubModuleId, TranslateSubModuleId);
    CheckName<EProblemIdentifier>(text, TranslateProblemId, TranslateProblemId);
    CheckName<EErrorSeverity>(text, TranslateSeverity, TranslateSeverity);
    const EProblemType type = TranslateProblemType(text);
    const std::string name = TranslateProblemType(type);
    Fuzz::Expect(name.empty() || TranslateProblemType(name) == type, "a failure mode is found by its name");
}

void CheckReadAgain(const std::string& text, const Apps::ErrorId& id)
{
    Apps::ErrorId again(-1, -1);
    std::string problem;
    Fuzz::Expect(Apps::ParseErrorId(text, again, problem) && again == id,
                 "an identifier can be written and read again");
}

/// Digits, perhaps with letters that stand for digits: no sign, blank or anything behind it.
bool OnlyDigits(const std::string& field)
{
    return !field.empty() && field.find_first_not_of("0123456789ABCDEFabcdefXx") == std::string::npos;
}

/// A failure mode by its name or number at the end, and numbers only if there are two fields.
void CheckWholeText(const std::string& text)
{
    std::vector<std::string> fields;
    Core::Utilities::SplitString(text, ":", fields, 0);
    Fuzz::Expect(fields.size() == 2 || fields.size() == 4, "an identifier has two fields or four");
    Fuzz::Expect(fields.size() == 4 || OnlyDigits(fields.front()), "all of a problem code is read");
    Fuzz::Expect(OnlyDigits(fields.back()) || TranslateProblemType(fields.back()) != eptUnknown,
                 "all of a failure mode is read");
}

void CheckReading(const std::string& text)
{
    const Apps::ErrorId before(-1, -1);
    Apps::ErrorId id = before;
    std::string problem;
    if (Apps::ParseErrorId(text, id, problem))
    {
        Fuzz::Expect(problem.empty(), "nothing is wrong with what was read");
        CheckWholeText(text);
        CheckReadAgain(Apps::ErrorName(id.first, id.second), id);
        CheckReadAgain(Apps::ErrorNumber(id.first, id.second), id);
    }
    else
        Fuzz::Expect(!problem.empty() && id == before, "a refusal has a reason and no result");
    Apps::NearestConfigured(text, Database());
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    Support::CConfigurationBuilder()
        .Leaf("Positioning:GPS:No Data:2")
        .Leaf("GPS:Battery:Power:0")
        .WriteTo(Prefix());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::string text = Fuzz::CInput(bytes, size).Rest();
    for (const int limit : {0, 1, 4, -1})
        CheckSplitting(text, limit);
    CheckNames(text);
    CheckReading(text);
    return 0;
}
