#include "schemas/SchemaTypes.h"

#include "common/text/ErrorNames.h"

#include <iterator>

namespace Faultkeeper::Apps
{

using namespace ConfigurationFormat;

namespace
{
typedef std::vector<std::string> Words;

void Begin(EAttributeValues values, CXmlWriter& schema)
{
    schema.Open("xs:simpleType", {{"name", TypeName(values)}});
}

void WriteWords(const Words& words, CXmlWriter& schema)
{
    schema.Open("xs:restriction", {{"base", "xs:string"}});
    for (const std::string& word : words)
        schema.Empty("xs:enumeration", {{"value", word}});
    schema.Close();
}

void WriteWordsType(EAttributeValues values, const Words& words, CXmlWriter& schema)
{
    Begin(values, schema);
    WriteWords(words, schema);
    schema.Close();
}

void WritePattern(const std::string& pattern, CXmlWriter& schema)
{
    schema.Open("xs:restriction", {{"base", "xs:string"}});
    schema.Empty("xs:pattern", {{"value", pattern}});
    schema.Close();
}

/// "(one|two|three)", with what has a meaning in patterns taken by its word.
std::string OneOf(const Words& words)
{
    std::string pattern;
    for (const std::string& word : words)
    {
        pattern += pattern.empty() ? "(" : "|";
        for (const char c : word)
        {
            if (std::string("\\.?*+{}()[]|^$-").find(c) != std::string::npos)
                pattern += '\\';
            pattern += c;
        }
    }
    return pattern + ")";
}

/// A name, shown by editors with the number that stands for it in ids; or the number itself.
void WriteFailureMode(CXmlWriter& schema)
{
    Words numbers;
    Begin(eavFailureMode, schema);
    schema.Open("xs:union");
    schema.Open("xs:simpleType");
    schema.Open("xs:restriction", {{"base", "xs:string"}});
    for (const SNamedValue& mode : FailureModeNames())
    {
        numbers.push_back(std::to_string(mode.value));
        schema.Open("xs:enumeration", {{"value", mode.name}});
        schema.Open("xs:annotation");
        schema.Text("xs:documentation", "in an id: " + numbers.back());
        schema.Close();
        schema.Close();
    }
    schema.Close();
    schema.Close();
    schema.Open("xs:simpleType");
    WritePattern("0*" + OneOf(numbers), schema);
    schema.Close();
    schema.Close();
    schema.Close();
}

void WriteErrorId(CXmlWriter& schema)
{
    Begin(eavErrorId, schema);
    WritePattern(OneOf(NamesOf(ModuleNames())) + ":" + OneOf(NamesOf(SubModuleNames())) + ":" +
                     OneOf(NamesOf(ProblemNames())) + ":[0-9]+",
                 schema);
    schema.Close();
}

void WriteFilled(EAttributeValues values, CXmlWriter& schema)
{
    Begin(values, schema);
    schema.Open("xs:restriction", {{"base", "xs:string"}});
    schema.Empty("xs:minLength", {{"value", "1"}});
    schema.Close();
    schema.Close();
}

Words TextTypes()
{
    Words types;
    for (const STextForm& form : kTextForms)
        types.emplace_back(form.type);
    return types;
}
} // namespace

std::string TypeName(EAttributeValues values)
{
    constexpr const char* kNames[] = {"Filled",      "FileName",    "ModuleName", "SubModuleName",
                                      "ProblemName", "FailureMode", "Severity",   "Flag",
                                      "TextType",    "OptionName",  "ErrorId"};
    static_assert(std::size(kNames) == eavErrorId + 1, "one for each kind");
    return kNames[values];
}

void WriteType(EAttributeValues values, CXmlWriter& schema)
{
    switch (values)
    {
    case eavModule:
        return WriteWordsType(values, NamesOf(ModuleNames()), schema);
    case eavSubModule:
        return WriteWordsType(values, NamesOf(SubModuleNames()), schema);
    case eavProblem:
        return WriteWordsType(values, NamesOf(ProblemNames()), schema);
    case eavSeverity:
        return WriteWordsType(values, NamesOf(SeverityNames()), schema);
    case eavFlag:
        return WriteWordsType(values, {kFlagOn, kFlagOff}, schema);
    case eavTextType:
        return WriteWordsType(values, TextTypes(), schema);
    case eavOptionName:
        return WriteWordsType(values, {std::begin(kOptionNames), std::end(kOptionNames)}, schema);
    case eavFailureMode:
        return WriteFailureMode(schema);
    case eavErrorId:
        return WriteErrorId(schema);
    case eavFile:
    case eavAnything:
        return WriteFilled(values, schema);
    }
}

} // namespace Faultkeeper::Apps
