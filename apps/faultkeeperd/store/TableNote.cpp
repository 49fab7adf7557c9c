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

/// How much of a file is written.
enum EExtent : int
{
    eexBeginning = 0,
    eexWhole,
};

/// In its place: a full disk takes that, where it would not take a file that was emptied first.
bool PutBytes(const std::string& path, int flags, const std::string& bytes, EExtent extent)
{
    const int file = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC | flags, kMode);
    if (file == -1)
        return false;
    const auto size = static_cast<off_t>(bytes.size());
    const bool put = write(file, bytes.data(), bytes.size()) == size;
    const bool cut = extent == eexBeginning || ftruncate(file, size) == 0;
    static_cast<void>(cut); // only the first line is read
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
    m_written = true;
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
    const bool signWillDo = m_written && store == m_store && m_relation != etrUnknown;
    m_written = (signWillDo && PutSign(relation)) || PutAll(relation, store);
    std::error_code ignored; // what is no file of ours is left alone
    if (!m_written && std::filesystem::is_regular_file(m_path, ignored))
        unlink(m_path.c_str()); // none is better than one that is cut off or not so any more
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
    return PutBytes(m_path, 0, std::string(1, kSigns[relation]), eexBeginning);
}

bool CTableNote::PutAll(ETableRelation relation, const std::string& store) const
{
    return PutBytes(m_path, O_CREAT, std::string(1, kSigns[relation]) + " " + store + "\n", eexWhole);
}

} // namespace Faultkeeper::Apps
