#include "faultkeeperctl/json/DisplayDocuments.h"

#include "faultkeeperctl/Display.h"

namespace Faultkeeper::Apps
{

namespace
{
Json TextOrNull(const SHistoryEntry& entry, const std::string& text)
{
    return entry.known ? Json(text) : Json();
}
} // namespace

Json PictureDocument(const CDisplay& display)
{
    return PictureDocument(display, display.Trees());
}

Json PictureDocument(const CDisplay& display, const std::vector<SErrorTree>& trees)
{
    Json document;
    document["state"] = StateName(display.Facts().state);
    document["trees"] = Json::array();
    for (const SErrorTree& tree : trees)
        document["trees"].push_back(TreeDocument(tree));
    document["unknown"] = display.UnknownRaised();
    return document;
}

Json HistoryDocument(const std::vector<SHistoryEntry>& entries)
{
    Json documents = Json::array();
    for (const SHistoryEntry& entry : entries)
    {
        Json document = IdDocument(entry.tree.problemCode, entry.tree.problemType);
        document["raised"] = entry.raised;
        document["title"] = TextOrNull(entry, entry.title);
        document["problem"] = TextOrNull(entry, entry.problem);
        document["solution"] = TextOrNull(entry, entry.solution);
        SetTime(document, "raised", entry.tree.raisedTime);
        SetTime(document, "cleared", entry.tree.clearedTime);
        document["counter1"] = entry.tree.counter1;
        document["counter2"] = entry.tree.counter2;
        documents.push_back(document);
    }
    return documents;
}

} // namespace Faultkeeper::Apps
