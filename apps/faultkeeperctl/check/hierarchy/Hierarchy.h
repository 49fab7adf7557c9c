#ifndef FAULTKEEPERCTL_CHECK_HIERARCHY_HIERARCHY_H
#define FAULTKEEPERCTL_CHECK_HIERARCHY_HIERARCHY_H

#include "faultkeeperctl/check/ConfigurationModel.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Faultkeeper::Apps
{

/// Who is linked to whom in a configuration. Errors are numbered in the order of loading.
class CHierarchy
{
public:
    typedef std::vector<std::size_t> Errors;

    /// A trigger set with the errors that it links, in order; one named twice stands twice.
    struct SSet
    {
        const STriggerSetModel* model;
        Errors triggers;
    };

    /// @param model  borrowed
    explicit CHierarchy(const SConfigurationModel& model);

    const SConfigurationModel& Model() const { return m_model; }

    const std::vector<SSet>& Sets(std::size_t error) const { return m_sets[error]; }

    /// The triggers of all sets of an error, as often as they stand there.
    const Errors& Triggers(std::size_t error) const { return m_triggers[error]; }
    const Errors& Parents(std::size_t error) const { return m_parents[error]; }

    /// All errors from the leaves upward, each behind its triggers, but for those on a cycle or above one.
    const Errors& FromLeaves() const { return m_fromLeaves; }

    /// Is it known of all errors what raises and clears them?
    bool KnowsWhatClears() const;
    /// Is it known of all errors which triggers they have and by which options, are all there that were
    /// meant, and are there no cycles?
    bool Certain() const;

private:
    template <typename Known> bool KnowsAllSets(const Known& known) const;
    void Sort();

    const SConfigurationModel& m_model;
    std::vector<std::vector<SSet>> m_sets;
    std::vector<Errors> m_triggers;
    std::vector<Errors> m_parents;
    Errors m_fromLeaves;
};

} // namespace Faultkeeper::Apps

#endif
