#pragma once

#include "../OwnerFixture.h"

#include <chrono>
#include <memory>
#include <string>

namespace Support
{

const Faultkeeper::Apps::COwner::Clock::time_point kStart{std::chrono::milliseconds(1000000)};

/// An owner that is killed and started again, without the processes.
class RestoredOwner : public OwnerTest
{
protected:
    void SetUp() override
    {
        OwnerTest::SetUp();
        UseStore();
        Start("boot");
    }

    /// Ends the owner without a word, and starts the next one.
    void Start(const std::string& boot, const std::string& configuration = "c")
    {
        m_owner.reset();
        LoadAgain();
        if (m_stored)
            UseStore();
        else
            UseStore(Faultkeeper::Apps::SStoreSettings());
        const Faultkeeper::Apps::SFormerState former =
            Faultkeeper::Apps::FindFormerState(Keeper(), Database(), boot, configuration);
        m_owner = std::make_unique<Faultkeeper::Apps::COwner>(Database(), Keeper(), former);
        m_owner->Publish(kStart);
    }

    /// Applies, publishes and stores a report.
    void Report(const Id& id, bool raised)
    {
        EXPECT_TRUE(m_owner->Apply(id.first, id.second, raised, "a"));
        m_owner->Publish(kStart);
        Keeper().CommitAtOnce(Faultkeeper::Apps::CStateKeeper::Clock::now());
    }

    bool Active(const Id& id) { return Database().RetrieveError(id.first, id.second)->Active(); }

    std::unique_ptr<Faultkeeper::Apps::COwner> m_owner;
    bool m_stored = true;
};

} // namespace Support
