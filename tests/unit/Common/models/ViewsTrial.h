#pragma once

#include "support/SharedTable.h"
#include "unit/Common/models/ViewsModel.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Models
{

/// Views that do what scripts say, each script on a fresh table, beside the model of them.
class CViewsTrial
{
public:
    explicit CViewsTrial(SStage stage);
    ~CViewsTrial();
    CViewsTrial(const CViewsTrial&) = delete;
    CViewsTrial& operator=(const CViewsTrial&) = delete;

    /// @return the first operation with another outcome than the model's, and both outcomes; "" if there is
    /// none
    std::string Difference(const TScript& script);

    /// All answers to the last script, up to the first that differed.
    const std::vector<std::string>& Answers() const { return m_answers; }

private:
    struct SView
    {
        SView(const std::string& prefix, bool create, Faultkeeper::EViewType type)
            : database(prefix), view(create, type)
        {
            view.SetCallback(&listener);
        }

        Faultkeeper::CErrorDatabase database;
        Faultkeeper::CErrorDatabaseView view;
        CWritingListener listener;
    };

    void Begin();
    void End();
    Faultkeeper::SStatusTable* Table();
    std::string Step(const SOperation& operation);
    std::string TableDifference();
    std::string Do(const SOperation& operation, std::int64_t seconds);
    std::string DoWhileBusy(const SOperation& operation, std::int64_t seconds);
    void SetSemaphore(int value) const;
    std::unique_ptr<SView> Made(const SOperation& operation) const;
    std::string Replace(const SOperation& operation);
    bool Write(SView& view, const SOperation& operation, std::int64_t seconds) const;
    static std::string Retrieved(SView& view, const SOperation& operation);
    static std::string Told(SView& view, int result);

    const SStage m_stage;
    Support::CSharedTableDirectory m_directory;
    Support::CFreshDirectory m_shuffledDirectory;
    const Faultkeeper::CErrorDatabase m_all;
    const Faultkeeper::CErrorDatabase m_shuffled;
    std::vector<std::unique_ptr<SView>> m_views;
    std::unique_ptr<CViewsModel> m_model;
    std::vector<std::string> m_answers;
};

} // namespace Models
