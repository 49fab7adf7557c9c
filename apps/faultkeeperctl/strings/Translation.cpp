#include "faultkeeperctl/strings/Translation.h"

#include <Faultkeeper/ErrorTree.h>

#include <cstring>

namespace Faultkeeper::Apps
{

namespace
{
std::map<std::string, std::size_t> PlacesOf(const std::vector<STextRecord>& records)
{
    std::map<std::string, std::size_t> places;
    for (std::size_t i = 0; i < records.size(); ++i)
        places.emplace(records[i].key, i);
    return places;
}

const STextRecord* Found(const std::vector<STextRecord>& records,
                         const std::map<std::string, std::size_t>& places, const std::string& key)
{
    const auto place = places.find(key);
    return place == places.end() ? nullptr : &records[place->second];
}

bool IsBlank(const std::string& text)
{
    return text.find_first_not_of(" \t\n") == std::string::npos;
}

// "KEY" of "KEY.original"; any other key as it is.
std::string WithoutOriginalSuffix(const std::string& key)
{
    const std::size_t length = std::strlen(kOriginalSuffix);
    const bool suffixed =
        key.size() > length && key.compare(key.size() - length, length, kOriginalSuffix) == 0;
    return suffixed ? key.substr(0, key.size() - length) : key;
}
} // namespace

std::vector<STextRecord> WithOriginals(const std::vector<STextRecord>& originals)
{
    std::vector<STextRecord> records;
    for (const STextRecord& original : originals)
    {
        records.push_back(original);
        records.push_back({original.key + kOriginalSuffix, original.text, 0});
    }
    return records;
}

CTranslation::CTranslation(const std::vector<STextRecord>& originals, const std::vector<STextRecord>& records)
    : m_originals(originals), m_records(records), m_originalPlaces(PlacesOf(m_originals)),
      m_places(PlacesOf(m_records))
{
}

const STextRecord* CTranslation::Translated(const std::string& key) const
{
    return Found(m_records, m_places, key);
}

const STextRecord* CTranslation::Former(const std::string& key) const
{
    return Found(m_records, m_places, key + kOriginalSuffix);
}

bool CTranslation::IsMissing(const STextRecord& original) const
{
    const STextRecord* const translated = Translated(original.key);
    return translated == nullptr || (IsBlank(translated->text) && !IsBlank(original.text));
}

bool CTranslation::IsExpected(const std::string& key) const
{
    return m_originalPlaces.count(WithoutOriginalSuffix(key)) != 0;
}

std::vector<STextFinding> CTranslation::Findings() const
{
    std::vector<STextFinding> findings;
    FindMissing(findings);
    for (const STextRecord& record : m_records)
        FindIn(record, findings);
    return findings;
}

void CTranslation::FindMissing(std::vector<STextFinding>& findings) const
{
    for (const STextRecord& original : m_originals)
    {
        const STextRecord* const translated = Translated(original.key);
        if (IsMissing(original))
            findings.push_back(
                {etfMissing, original.key, translated == nullptr ? 0 : translated->line, original.text, ""});
    }
}

void CTranslation::FindIn(const STextRecord& record, std::vector<STextFinding>& findings) const
{
    const STextRecord* const original = Found(m_originals, m_originalPlaces, record.key);
    const STextRecord* const former = Former(record.key);
    if (!IsExpected(record.key))
        findings.push_back({etfLeftOver, record.key, record.line, "", ""});
    else if (record.text != Translated(record.key)->text)
        findings.push_back(
            {etfTwice, record.key, record.line, original == nullptr ? "" : original->text, ""});
    else if (original != nullptr && former != nullptr && !IsMissing(*original) &&
             former->text != original->text)
        findings.push_back({etfChanged, record.key, record.line, original->text, former->text});
}

std::size_t CTranslation::Incomparable() const
{
    std::size_t count = 0;
    for (const STextRecord& original : m_originals)
        count += !IsMissing(original) && Former(original.key) == nullptr ? 1U : 0U;
    return count;
}

std::string CTranslation::Text(const std::string& key, std::vector<std::string>& missing) const
{
    const STextRecord* const original = Found(m_originals, m_originalPlaces, key);
    if (original == nullptr || !IsMissing(*original))
    {
        const STextRecord* const translated = Translated(key);
        return translated == nullptr ? "" : translated->text;
    }
    missing.push_back(key);
    return original->text;
}

void Translate(SErrorTree& tree, const CTranslation& translation, std::vector<std::string>& missing)
{
    tree.title = translation.Text(tree.title, missing);
    tree.shortTitle = translation.Text(tree.shortTitle, missing);
    for (std::vector<std::string>* const texts : {&tree.problems, &tree.solutions})
    {
        for (std::string& text : *texts)
            text = translation.Text(text, missing);
    }
}

} // namespace Faultkeeper::Apps
