#include "faultkeeperd/store/TableNote.h"

#include <fcntl.h>
#include <sys/stat.h>
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

/// In its place: a full disk takes that, where it would not take a file that was emptied first. If nothing of
/// it can be written, the file is emptied: it must not go on saying what is not so any more.
bool PutBytes(const std::string& path, int flags, const std::string& bytes, EExtent extent)
{
    const int file = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC | flags, kMode);
    if (file == -1)
        return false;
    const auto size = static_cast<off_t>(bytes.size());
    const ssize_t put = write(file, bytes.data(), bytes.size());
    const bool cut = (put > 0 && extent == eexBeginning) || ftruncate(file, put > 0 ? size : 0) == 0;
    static_cast<void>(cut); // only the first line is read
    close(file);
    return put == size;
}

/// What is no file, or another user's, is left alone.
void RemoveOwn(const std::string& path)
{
    struct stat file = {};
    if (lstat(path.c_str(), &file) == 0 && S_ISREG(file.st_mode) && file.st_uid == geteuid())
        unlink(path.c_str());
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
    if (m_path.empty() || (m_written && relation == m_relation && store == m_store))
        return;
    const bool signWillDo = m_written && store == m_store && m_relation != etrUnknown;
    m_written = (signWillDo && PutSign(relation)) || PutAll(relation, store);
    // One that is empty or cut off has the table go before the store, which is right for all others.
    if (!m_written && relation == etrStored)
        RemoveOwn(m_path);
    m_relation = relation;
    m_store = store;
}

void CTableNote::FallBehind()
{
    if (m_relation == etrStored)
        Write(etrAhead, m_store);
    else if (m_relation == etrUnknown)
        Write(etrElsewhere, m_store);
    else if (!m_written)
        Write(m_relation, m_store); // it may go now
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
