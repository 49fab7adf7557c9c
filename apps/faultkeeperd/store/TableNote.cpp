#include "faultkeeperd/store/TableNote.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace Faultkeeper::Apps
{

namespace
{
constexpr char kSigns[] = "?=>+?"; // of the relations, in their order; the first one is never written
constexpr mode_t kMode = 0644;

ETableRelation RelationOf(char sign)
{
    const char* const found = sign == '\0' ? nullptr : std::strchr(kSigns + 1, sign);
    return found == nullptr ? etrElsewhere : static_cast<ETableRelation>(found - kSigns);
}

/// Writes at the beginning of a file.
bool PutBytes(const std::string& path, int flags, const std::string& bytes)
{
    const int file = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC | flags, kMode);
    if (file == -1)
        return false;
    const bool put = write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    close(file);
    return put;
}
} // namespace

void CTableNote::Read()
{
    std::error_code ignored; // what cannot be read is no note
    if (!std::filesystem::is_regular_file(m_path, ignored))
        return;
    std::ifstream file(m_path);
    std::string line;
    std::getline(file, line); // nothing, if it could not be written whole
    m_relation = RelationOf(line.empty() ? '\0' : line.front());
    m_store = line.substr(line.size() < 2 ? line.size() : 2);
}

ETableRelation CTableNote::RelationTo(const std::string& store) const
{
    const bool ofOne = m_relation == etrStored || m_relation == etrAhead;
    return ofOne && store != m_store ? etrElsewhere : m_relation;
}

void CTableNote::Write(ETableRelation relation, const std::string& store)
{
    if (m_path.empty() || (relation == m_relation && store == m_store))
        return;
    if (store != m_store || m_relation == etrUnknown || !PutSign(relation))
        PutAll(relation, store);
    m_relation = relation;
    m_store = store;
}

void CTableNote::FallBehind()
{
    if (m_relation == etrStored)
        Write(etrAhead, m_store);
    else if (m_relation == etrUnknown)
        Write(etrElsewhere, m_store);
}

bool CTableNote::PutSign(ETableRelation relation) const
{
    return PutBytes(m_path, 0, std::string(1, kSigns[relation]));
}

void CTableNote::PutAll(ETableRelation relation, const std::string& store) const
{
    PutBytes(m_path, O_CREAT | O_TRUNC, std::string(1, kSigns[relation]) + " " + store + "\n");
}

} // namespace Faultkeeper::Apps
