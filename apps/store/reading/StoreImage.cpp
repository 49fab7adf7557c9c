#include "store/reading/StoreImage.h"

#include "store/Sqlite.h"
#include "store/StoreFile.h"

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <thread>

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kAttempts = 200;
constexpr std::chrono::milliseconds kPause(10);
// File systems tell times by the system's tick, some by the second.
constexpr std::int64_t kTick = 50000000;
constexpr std::int64_t kCoarseTick = 2000000000;
constexpr std::int64_t kSecond = 1000000000;

// A log: a head, then frames, each with a head of its own and a page. Numbers are big-endian.
constexpr std::size_t kLogHeadBytes = 32;
constexpr std::size_t kFrameHeadBytes = 24;
constexpr std::uint32_t kLogMagic = 0x377F0682; // the lowest bit tells the byte order of what is summed up
constexpr std::uint32_t kLogVersion = 3007000;
constexpr std::size_t kPageSizeAt = 8;
constexpr std::size_t kSaltAt = 16; // in the head of the log
constexpr std::size_t kHeadSumAt = 24;
constexpr std::size_t kPagesAt = 4; // in the head of a frame; 0 unless it ends a commit
constexpr std::size_t kFrameSaltAt = 8;
constexpr std::size_t kFrameSumAt = 16;
constexpr std::size_t kSaltBytes = 8;
constexpr std::size_t kSmallestPage = 512;
constexpr std::size_t kLargestPage = 65536;

// In the head of a database: which version may write it, and which may read it; 2 has a log beside it.
constexpr std::size_t kVersionsAt = 18;
constexpr std::size_t kDatabaseHeadBytes = 100;

std::uint32_t NumberAt(const unsigned char* bytes)
{
    return std::uint32_t(bytes[0]) << 24 | std::uint32_t(bytes[1]) << 16 | std::uint32_t(bytes[2]) << 8 |
           std::uint32_t(bytes[3]);
}

/// The running sum that every head of a log carries.
class CLogSum
{
public:
    explicit CLogSum(bool bigEndian) : m_bigEndian(bigEndian) {}

    /// @param count  of bytes, a multiple of 8
    void Add(const unsigned char* bytes, std::size_t count)
    {
        for (std::size_t at = 0; at < count; at += 8)
        {
            m_first += Word(bytes + at) + m_second;
            m_second += Word(bytes + at + 4) + m_first;
        }
    }

    bool Is(const unsigned char* stored) const
    {
        return NumberAt(stored) == m_first && NumberAt(stored + 4) == m_second;
    }

private:
    std::uint32_t Word(const unsigned char* bytes) const
    {
        if (m_bigEndian)
            return NumberAt(bytes);
        const unsigned char turned[] = {bytes[3], bytes[2], bytes[1], bytes[0]};
        return NumberAt(turned);
    }

    const bool m_bigEndian;
    std::uint32_t m_first = 0;
    std::uint32_t m_second = 0;
};

/// Goes through the frames of a log, as far as they are right.
class CLog
{
public:
    explicit CLog(const Bytes& bytes) : m_bytes(bytes), m_sum(!bytes.empty() && (MagicOf(bytes) & 1) != 0)
    {
        if (!BeginsRight())
            return;
        m_pageBytes = NumberAt(m_bytes.data() + kPageSizeAt);
        while (NextIsRight())
        {
            ++m_frames;
            const std::uint32_t pages = NumberAt(Frame(m_frames - 1) + kPagesAt);
            if (pages == 0)
                continue;
            m_pages = pages;
            m_committed = m_frames;
        }
    }

    std::size_t Committed() const { return m_committed; }
    std::size_t PageBytes() const { return m_pageBytes; }
    /// Of the database, after the last commit.
    std::size_t Pages() const { return m_pages; }
    /// From 1.
    std::size_t PageOf(std::size_t frame) const { return NumberAt(Frame(frame)); }
    const unsigned char* ContentOf(std::size_t frame) const { return Frame(frame) + kFrameHeadBytes; }

private:
    static std::uint32_t MagicOf(const Bytes& bytes)
    {
        return bytes.size() < kLogHeadBytes ? 0 : NumberAt(bytes.data());
    }

    bool BeginsRight()
    {
        if ((MagicOf(m_bytes) & ~1U) != kLogMagic || NumberAt(m_bytes.data() + 4) != kLogVersion)
            return false;
        const std::size_t page = NumberAt(m_bytes.data() + kPageSizeAt);
        m_sum.Add(m_bytes.data(), kHeadSumAt);
        return page >= kSmallestPage && page <= kLargestPage && (page & (page - 1)) == 0 &&
               m_sum.Is(m_bytes.data() + kHeadSumAt);
    }

    const unsigned char* Frame(std::size_t number) const
    {
        return m_bytes.data() + kLogHeadBytes + number * (kFrameHeadBytes + m_pageBytes);
    }

    bool NextIsRight()
    {
        const std::size_t room = (m_bytes.size() - kLogHeadBytes) / (kFrameHeadBytes + m_pageBytes);
        if (m_frames >= room)
            return false;
        const unsigned char* const frame = Frame(m_frames);
        m_sum.Add(frame, kFrameSaltAt);
        m_sum.Add(frame + kFrameHeadBytes, m_pageBytes);
        return NumberAt(frame) != 0 && m_sum.Is(frame + kFrameSumAt) &&
               std::memcmp(frame + kFrameSaltAt, m_bytes.data() + kSaltAt, kSaltBytes) == 0;
    }

    const Bytes& m_bytes;
    CLogSum m_sum;
    std::size_t m_pageBytes = 0;
    std::size_t m_frames = 0;
    std::size_t m_committed = 0; // frames up to the end of the last commit
    std::size_t m_pages = 0;
};

typedef std::unique_ptr<std::FILE, int (*)(std::FILE*)> File;

[[noreturn]] void FailToRead(const std::string& path)
{
    throw CSqliteFailure(SQLITE_CANTOPEN, "cannot read " + path + ": " + std::strerror(errno));
}

/// @param most  bytes, from the beginning; all without it
/// @return nothing for a file that does not exist
Bytes ReadBytes(const std::string& path, std::size_t most = SIZE_MAX)
{
    constexpr std::size_t kPiece = 1 << 16;
    Bytes bytes;
    const File file(std::fopen(path.c_str(), "rbe"), std::fclose);
    if (file == nullptr && errno == ENOENT)
        return bytes;
    if (file == nullptr)
        FailToRead(path);
    for (std::size_t read = 1; read > 0 && bytes.size() < most;)
    {
        const std::size_t before = bytes.size();
        const std::size_t wanted = std::min(kPiece, most - before);
        bytes.resize(before + wanted);
        read = std::fread(bytes.data() + before, 1, wanted, file.get());
        bytes.resize(before + read);
    }
    if (std::ferror(file.get()) != 0)
        FailToRead(path);
    return bytes;
}

void MarkFile(const std::string& path, std::int64_t& changed, std::int64_t& bytes)
{
    struct stat facts = {};
    changed = -1;
    if (stat(path.c_str(), &facts) != 0)
        return;
    changed = std::int64_t(facts.st_mtim.tv_sec) * kSecond + facts.st_mtim.tv_nsec;
    bytes = facts.st_size;
}

bool Settled(std::int64_t changed, std::int64_t now)
{
    const std::int64_t tick = changed % kSecond == 0 ? kCoarseTick : kTick;
    return changed < now - tick || changed > now + tick; // the clock may have been set back
}

bool Begins(const Bytes& bytes, const Bytes& beginning)
{
    return bytes.size() >= beginning.size() &&
           std::equal(beginning.begin(), beginning.end(), bytes.begin()) &&
           (!beginning.empty() || bytes.empty());
}

/// @return false if an owner was at work in a way that leaves what was read without meaning
bool TryToRead(const std::string& path, Bytes& image)
{
    const std::string logPath = path + "-wal";
    const SStoreMark before = MarkOfStore(path);
    if (before.databaseChanged == -1)
    {
        errno = ENOENT;
        FailToRead(path);
    }
    const Bytes beginning = ReadBytes(logPath, kLogHeadBytes);
    image = ReadBytes(path);
    const Bytes log = ReadBytes(logPath);
    const SStoreMark after = MarkOfStore(path);
    if (!Begins(log, beginning) || ReadBytes(logPath, kLogHeadBytes) != beginning || image.empty() ||
        access((path + "-journal").c_str(), F_OK) == 0 || (log.empty() && !before.SameAs(after)))
        return false;
    AddLog(image, log);
    return true;
}
} // namespace

bool SStoreMark::SameAs(const SStoreMark& other) const
{
    return databaseChanged == other.databaseChanged && databaseBytes == other.databaseBytes &&
           logChanged == other.logChanged && logBytes == other.logBytes;
}

SStoreMark MarkOfStore(const std::string& path)
{
    SStoreMark mark;
    MarkFile(path, mark.databaseChanged, mark.databaseBytes);
    MarkFile(path + "-wal", mark.logChanged, mark.logBytes);
    timespec time = {};
    clock_gettime(CLOCK_REALTIME, &time);
    const std::int64_t now = std::int64_t(time.tv_sec) * kSecond + time.tv_nsec;
    mark.settled = Settled(mark.databaseChanged, now) && Settled(mark.logChanged, now);
    return mark;
}

void AddLog(Bytes& image, const Bytes& log)
{
    const CLog frames(log);
    if (frames.Committed() == 0)
        return;
    // What the log adds to the database stands in it, page by page.
    if (frames.Pages() > image.size() / frames.PageBytes() + frames.Committed())
        throw CSqliteFailure(SQLITE_CORRUPT, "its log does not fit it");
    image.resize(frames.Pages() * frames.PageBytes());
    for (std::size_t frame = 0; frame < frames.Committed(); ++frame)
    {
        const std::size_t page = frames.PageOf(frame);
        if (page <= frames.Pages())
            std::memcpy(image.data() + (page - 1) * frames.PageBytes(), frames.ContentOf(frame),
                        frames.PageBytes());
    }
}

Bytes ReadStoreImage(const std::string& path)
{
    CheckStoreHead(path);
    Bytes image;
    for (int attempt = 0; !TryToRead(path, image); ++attempt)
    {
        if (attempt >= kAttempts)
            throw CSqliteFailure(SQLITE_BUSY, "it is being made, or changes faster than it can be read");
        std::this_thread::sleep_for(kPause);
    }
    if (image.size() >= kDatabaseHeadBytes) // the log is in it now
        image[kVersionsAt] = image[kVersionsAt + 1] = 1;
    return image;
}

} // namespace Faultkeeper::Apps
