#ifndef FAULTKEEPERCTL_FILETEXT_H
#define FAULTKEEPERCTL_FILETEXT_H

#include <string>

namespace Faultkeeper::Apps
{

/// All that is in a file, or comes from standard input if the path is "-", but for a mark of UTF-8 at its
/// beginning.
/// @throws CFailure (epsNo) if it cannot be read
std::string FileText(const std::string& path);

/// What to call it in messages.
std::string FileName(const std::string& path);

} // namespace Faultkeeper::Apps

#endif
