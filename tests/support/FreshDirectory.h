#pragma once

#include <string>

namespace Support
{

/// A new empty directory below the system's temporary one; removed with all it holds when the object goes.
class CFreshDirectory
{
public:
    CFreshDirectory();
    ~CFreshDirectory();
    CFreshDirectory(const CFreshDirectory&) = delete;
    CFreshDirectory& operator=(const CFreshDirectory&) = delete;

    /// Absolute path without a slash at its end.
    const std::string& Path() const { return m_path; }
    /// The same with a slash, as the loaders want it.
    std::string Prefix() const { return m_path + "/"; }
    /// Absolute path of a file in it.
    std::string File(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

/// Makes a directory the process's working directory for as long as the object lives.
class CWorkingDirectory
{
public:
    explicit CWorkingDirectory(const std::string& path);
    ~CWorkingDirectory();
    CWorkingDirectory(const CWorkingDirectory&) = delete;
    CWorkingDirectory& operator=(const CWorkingDirectory&) = delete;

private:
    std::string m_before;
};

void WriteFile(const std::string& path, const std::string& text);
std::string ReadFile(const std::string& path);

} // namespace Support
