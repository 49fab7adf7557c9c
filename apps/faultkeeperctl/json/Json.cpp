#include "faultkeeperctl/json/Json.h"

#include "common/text/ErrorNames.h"
#include "faultkeeperctl/text/TimeText.h"

#include <Faultkeeper/ErrorTree.h>
#include <Faultkeeper/Identifiers.h>

#include <iostream>

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kIndent = 2;

std::string Dumped(const Json& document, int indent)
{
    // a byte that is no UTF-8 becomes a replacement character; the rest of the document is worth more than
    // the byte
    return document.dump(indent, ' ', false, Json::error_handler_t::replace);
}
} // namespace

std::string DocumentText(const Json& document)
{
    return Dumped(document, kIndent) + "\n";
}

void PrintDocument(const Json& document)
{
    std::cout << DocumentText(document);
}

void PrintLine(const Json& document)
{
    std::cout << Dumped(document, -1) << std::endl;
}

void SetTime(Json& object, const std::string& key, std::int64_t seconds)
{
    object[key + "Time"] = seconds == 0 ? Json() : Json(TimeText(seconds));
    object[key + "Seconds"] = seconds == 0 ? Json() : Json(seconds);
}

Json IdDocument(int problemCode, int problemType)
{
    Json document;
    document["id"] = ErrorName(problemCode, problemType);
    document["problemCode"] = problemCode;
    document["problemType"] = problemType;
    return document;
}

Json TreeDocument(const SErrorTree& tree)
{
    Json document = IdDocument(tree.problemCode, tree.problemType);
    document["title"] = tree.title;
    document["shortTitle"] = tree.shortTitle;
    document["severity"] = TranslateSeverity(static_cast<EErrorSeverity>(tree.severity));
    document["problems"] = tree.problems;
    document["solutions"] = tree.solutions;
    SetTime(document, "raised", tree.raisedTime);
    SetTime(document, "cleared", tree.clearedTime);
    document["counter1"] = tree.counter1;
    document["counter2"] = tree.counter2;
    document["stateKey"] = tree.stateKey;
    document["friendlyCode"] = tree.friendlyCode;
    document["visible"] = tree.visible;
    document["fullScreen"] = tree.fullScreen;
    document["forceShutdown"] = tree.forceShutdown;
    document["includeServiceNumber"] = tree.includeServiceNumber;
    document["shouldBeep"] = tree.shouldBeep;
    document["shouldBeepIfGuiding"] = tree.shouldBeepIfGuiding;
    return document;
}

} // namespace Faultkeeper::Apps
