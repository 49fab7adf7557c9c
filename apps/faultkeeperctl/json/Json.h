#ifndef FAULTKEEPERCTL_JSON_H
#define FAULTKEEPERCTL_JSON_H

#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>

namespace Faultkeeper
{
class CError;
struct SErrorEntry;
struct SErrorTree;
} // namespace Faultkeeper

namespace Faultkeeper::Apps
{

/// Documents keep the order in which their keys were set. Scripts rely on the keys: append, never rename.
typedef nlohmann::ordered_json Json;

/// A document on several lines and with a line end.
std::string DocumentText(const Json& document);
/// Prints that.
void PrintDocument(const Json& document);
/// Prints a document on one line, at once.
void PrintLine(const Json& document);

/// Sets "<key>Time" (local time as text) and "<key>Seconds" (since 1970); both null for 0, which is "never".
void SetTime(Json& object, const std::string& key, std::int64_t seconds);

/// {"id": "Positioning:GPS:No Data:2", "problemCode": 265243, "problemType": 2}
Json IdDocument(int problemCode, int problemType);

/// The identifier and all other fields of a tree; the severity by its name.
Json TreeDocument(const SErrorTree& tree);

} // namespace Faultkeeper::Apps

#endif
