#ifndef CORE_XMLFILE_H
#define CORE_XMLFILE_H

#include <string>

namespace Core
{
namespace IO
{

/// Reads a whole regular file. Text in UTF-16 becomes UTF-8, so that positions in it can
/// be counted; what is wrong in it stays wrong, for the parser to find in its place.
/// @param text       replaced
/// @param recoded    replaced: "UTF-16LE" or "UTF-16BE" if the text was that, otherwise empty
/// @return empty if all went well, otherwise the reason, such as "No such file or directory"
std::string ReadXMLFile(const std::string& path, std::string& text, std::string& recoded);

} // namespace IO
} // namespace Core

#endif
