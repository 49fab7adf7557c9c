#pragma once

#include "support/FreshDirectory.h"

#include <gtest/gtest.h>

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <string>

namespace Support
{

/// A fresh directory whose table key nobody uses, made the working directory; whatever table and lock stand
/// under the key at the end are removed. The key is made of 16 bits of the directory's number, so two
/// directories can share one: such a directory is put aside and another one taken.
class CSharedTableDirectory
{
public:
    CSharedTableDirectory();
    ~CSharedTableDirectory();
    CSharedTableDirectory(const CSharedTableDirectory&) = delete;
    CSharedTableDirectory& operator=(const CSharedTableDirectory&) = delete;

    const std::string& Path() const { return m_directory->Path(); }
    std::string Prefix() const { return m_directory->Prefix(); }
    std::string File(const std::string& name) const { return m_directory->File(name); }
    key_t Key() const { return m_key; }

    /// The segment's bytes, attached at first use; null if there is no segment.
    std::uint8_t* Table();
    /// The semaphore set, or -1.
    int Semaphore() const;
    /// Present value of the semaphore.
    int SemaphoreValue() const;
    /// Removes segment and semaphore now.
    void RemoveTable();

private:
    bool ClaimFreshKey();

    std::unique_ptr<CFreshDirectory> m_directory;
    std::unique_ptr<CWorkingDirectory> m_working;
    key_t m_key = -1;
    int m_claim = -1; // descriptor of the locked claim file
    std::string m_claimPath;
    std::uint8_t* m_table = nullptr;
};

/// Base of all tests of the shared table.
class SharedTableTest : public testing::Test
{
protected:
    CSharedTableDirectory m_directory;
};

} // namespace Support
