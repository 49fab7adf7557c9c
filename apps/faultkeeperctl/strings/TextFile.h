#ifndef FAULTKEEPERCTL_TEXTFILE_H
#define FAULTKEEPERCTL_TEXTFILE_H

#include <string>
#include <vector>

/// The text files that translators get and give back: "[KEY]" on a line, the text on the lines below it.
namespace Faultkeeper::Apps
{

/// A key and its text.
struct STextRecord
{
    std::string key;
    std::string text; ///< lines with "\n" between them
    int line = 0;     ///< of the key, the first line being 1
};

/// Takes a file apart. A key is what stands in brackets on a line of its own with three colons in it; all up
/// to the next one is its text, so that a text may not hold such a line, but for blank lines at its end.
/// Line ends may be those of Windows. Text in front of the first key has the key "".
std::vector<STextRecord> ParsedTexts(const std::string& content);

/// Reads and takes apart a file, "-" being standard input.
/// @throws CFailure (epsNo) if it cannot be read
std::vector<STextRecord> TextsOfFile(const std::string& path);

/// The content of a file with these records.
std::string TextFileContent(const std::vector<STextRecord>& records);

} // namespace Faultkeeper::Apps

#endif
