#include "support/FreshDirectory.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace Support
{

CFreshDirectory::CFreshDirectory()
{
    const std::string pattern = (std::filesystem::temp_directory_path() / "faultkeeper-test-").string() +
                                std::string(6, 'X'); // for mkdtemp to fill in
    std::vector<char> path(pattern.c_str(), pattern.c_str() + pattern.size() + 1);
    if (mkdtemp(path.data()) == nullptr)
        throw std::runtime_error("no fresh directory " + pattern);
    m_path = path.data();
}

CFreshDirectory::~CFreshDirectory()
{
    std::error_code ignored; // a destructor has nobody to tell
    std::filesystem::remove_all(m_path, ignored);
}

CWorkingDirectory::CWorkingDirectory(const std::string& path)
    : m_before(std::filesystem::current_path().string())
{
    std::filesystem::current_path(path);
}

CWorkingDirectory::~CWorkingDirectory()
{
    std::error_code ignored;
    std::filesystem::current_path(m_before, ignored);
}

void WriteFile(const std::string& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    if (!file.flush())
        throw std::runtime_error("cannot write " + path);
}

std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read " + path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

} // namespace Support
