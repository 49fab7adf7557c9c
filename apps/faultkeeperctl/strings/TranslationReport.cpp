#include "faultkeeperctl/strings/TranslationReport.h"

#include "common/text/TypedText.h"

#include <algorithm>
#include <cstddef>

namespace Faultkeeper::Apps
{

namespace
{
constexpr const char* kMargin = "    ";

std::string What(const STextFinding& finding)
{
    if (finding.key.empty())
        return "text in front of the first key";
    const std::string key = WithoutControls(finding.key);
    switch (finding.kind)
    {
    case etfMissing:
        return "missing: " + key;
    case etfLeftOver:
        return "left over: " + key;
    case etfChanged:
        return "changed: " + key;
    case etfTwice:
        break;
    }
    return "there twice: " + key;
}

// Each line of the text behind the same margin.
std::string Detail(const std::string& label, const std::string& text)
{
    std::string detail;
    for (std::size_t start = 0; start <= text.size();)
    {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        detail += kMargin + (start == 0 ? label : std::string(label.size(), ' ')) +
                  WithoutControls(text.substr(start, end - start)) + "\n";
        start = end + 1;
    }
    return detail;
}

std::string FindingText(const std::string& path, const STextFinding& finding)
{
    const std::string line = std::to_string(std::max(finding.line, 1));
    std::string text = path + ":" + line + ":1: error: " + What(finding) + "\n";
    if (finding.kind == etfMissing)
        text += Detail("text:  ", finding.original);
    if (finding.kind == etfChanged)
        text += Detail("was:   ", finding.former) + Detail("is:    ", finding.original);
    return text;
}

std::size_t CountOf(const std::vector<STextFinding>& findings, ETextFinding kind)
{
    return static_cast<std::size_t>(std::count_if(findings.begin(), findings.end(),
                                                  [kind](const STextFinding& finding)
                                                  { return finding.kind == kind; }));
}

std::string CountsText(const CTranslation& translation, const std::vector<STextFinding>& findings)
{
    std::string text = std::to_string(translation.Count()) + " texts";
    const auto add = [&text](std::size_t count, const char* what)
    { text += count == 0 ? "" : ", " + std::to_string(count) + " " + what; };
    add(CountOf(findings, etfMissing), "missing");
    add(CountOf(findings, etfLeftOver), "left over");
    add(CountOf(findings, etfChanged), "changed");
    add(CountOf(findings, etfTwice), "there twice");
    add(translation.Incomparable(), "without what they were translated from");
    return text + "\n";
}

Json FindingsDocument(const std::vector<STextFinding>& findings, ETextFinding kind)
{
    Json documents = Json::array();
    for (const STextFinding& finding : findings)
    {
        if (finding.kind != kind)
            continue;
        Json document;
        document["key"] = finding.key;
        document["line"] = finding.line == 0 ? Json() : Json(finding.line);
        if (kind == etfChanged)
            document["translatedFrom"] = finding.former;
        if (kind != etfLeftOver)
            document["original"] = finding.original;
        documents.push_back(document);
    }
    return documents;
}
} // namespace

std::string TranslationText(const std::string& path, const CTranslation& translation)
{
    const std::vector<STextFinding> findings = translation.Findings();
    std::string text;
    for (const STextFinding& finding : findings)
        text += FindingText(path, finding);
    return text + CountsText(translation, findings);
}

Json TranslationDocument(const std::string& path, const CTranslation& translation)
{
    const std::vector<STextFinding> findings = translation.Findings();
    Json document;
    document["file"] = path;
    document["texts"] = translation.Count();
    document["missing"] = FindingsDocument(findings, etfMissing);
    document["leftOver"] = FindingsDocument(findings, etfLeftOver);
    document["changed"] = FindingsDocument(findings, etfChanged);
    document["twice"] = FindingsDocument(findings, etfTwice);
    document["incomparable"] = translation.Incomparable();
    return document;
}

} // namespace Faultkeeper::Apps
