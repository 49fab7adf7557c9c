#ifndef FAULTKEEPERCTL_TEXTWIDTH_H
#define FAULTKEEPERCTL_TEXTWIDTH_H

#include <string>
#include <vector>

/// Text as it stands on a terminal: UTF-8, measured in columns instead of bytes.
namespace Faultkeeper::Apps
{

/// Columns that the text takes: none for a combining mark, two for a wide character of East Asia, otherwise
/// one for each character, also for a byte that is no UTF-8.
int DisplayWidth(const std::string& text);

/// The text with blanks behind it up to `width` columns; a longer one as it is.
std::string Padded(const std::string& text, int width);

/// The text in lines of at most `width` columns, broken at blanks, or within a word that is too long for a
/// line. Line ends of the text stay; other control characters, and bytes that are no UTF-8, become "\xNN", so
/// that no text of a configuration or a translation steers a terminal. Never empty.
std::vector<std::string> Wrapped(const std::string& text, int width);

/// Columns to write in: those of the terminal that standard output is; if it is none, those that
/// $COLUMNS says, otherwise 100.
int OutputWidth();

} // namespace Faultkeeper::Apps

#endif
