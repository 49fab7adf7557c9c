#ifndef FAULTKEEPER_FAULTKEEPERD_LOG_H
#define FAULTKEEPER_FAULTKEEPERD_LOG_H

#include <string>

namespace Faultkeeper::Apps
{

/// One line each on standard error, "faultkeeperd: <level>: text". Line ends, other control characters and
/// what is no UTF-8 in `text` are written as \xNN, so nothing a peer sends can forge a line or steer a
/// terminal.
void LogError(const std::string& text);
void LogWarning(const std::string& text);
void LogInfo(const std::string& text);

/// From here on the same line is written at most once a second, with the number of those left out.
void LimitLog();

/// Writes what is due of the lines that were left out: to be called about once a second, and with `all` at
/// the end.
void LogLeftOut(bool all);

/// The text of somebody else as a log line may hold it, in quotation marks that it cannot end: no more than
/// its first 80 bytes.
std::string Quoted(const std::string& text);

} // namespace Faultkeeper::Apps

#endif
