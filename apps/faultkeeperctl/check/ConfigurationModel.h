#ifndef FAULTKEEPERCTL_CHECK_CONFIGURATIONMODEL_H
#define FAULTKEEPERCTL_CHECK_CONFIGURATIONMODEL_H

#include "common/text/ErrorNames.h"
#include "faultkeeperctl/check/Findings.h"

#include <Faultkeeper/Identifiers.h>
#include <Faultkeeper/TriggerSet.h>

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

/// The type of text that heads trees.
constexpr const char* kTitle = "title";

/// The bits of a problem code that hold the module.
constexpr int kModuleMask = 0xFF0000;

/// Where an error would stand that is not there.
constexpr std::size_t kNoError = static_cast<std::size_t>(-1);

/// An error as another element names it.
struct SReference
{
    SPlace place;
    std::string text;              ///< as written
    ErrorId id = ErrorId(-1, -1);  ///< names that are not known stand for the nearest ones
    bool doubtful = true;          ///< something is wrong with the text and has been told
    bool guessed = false;          ///< a name in it is not known, so that the identifier is a guess
    std::size_t target = kNoError; ///< the error of that identifier, if it is no guess nor names itself
    bool toItself = false;
    std::size_t meant = kNoError; ///< of a guess, or one that leads nowhere, the error probably meant
};

struct STriggerSetModel
{
    SPlace place;
    bool autoTrigger = false;
    int needed = 1;
    SPlace neededPlace; ///< of the threshold; of the set if it has none of its own
    EErrorLinkingMode linking = eelmDeep;
    EErrorTitleSource title = eetsParent;
    std::vector<SReference> triggers; ///< as written, those that lead nowhere included
    bool whole = true;                ///< false if something in it was skipped
    std::set<std::string> doubtful;   ///< options that probably were to say something else, which was told

    /// Was something told of the option, so that its setting is not known?
    bool Doubts(const char* option) const { return doubtful.count(option) != 0; }

    /// Is it in doubt what raises and clears its error? How it links texts does not matter to that.
    bool DoubtsWhatClears() const;
    /// The errors that are linked, in order; one named twice stands twice.
    std::vector<std::size_t> Linked() const;
};

struct STextModel
{
    SPlace place;
    std::string text;
};

/// One "Error" element.
struct SDefinition
{
    SPlace place;
    ErrorId id = ErrorId(-1, -1);
    int meantMode = -1;      ///< of a failure mode that is not known, the one that comes nearest
    bool identified = false; ///< all its names are known, or come near some that no other error has
    bool guessed = false;    ///< a name of its module, sub-module or problem is not known
    bool visible = false;
    bool mayBeVisible = false; ///< it is, or only a slip that was told keeps it from that
    int severity = eesUnknown;
    std::map<std::string, STextModel> texts; ///< by type
    bool titleWhole = true;                  ///< false if something that may have been the title was told
    std::vector<STriggerSetModel> sets;
    bool setsWhole = true; ///< false if something that may have been a set was told

    std::string Name() const { return ErrorName(id.first, id.second); }
    bool HasTitle() const;
    /// Does it have a title, or only lack one for a slip that was told?
    bool MayHaveTitle() const { return HasTitle() || !titleWhole; }
};

/// One "pattern" element.
struct SPatternModel
{
    SPlace place;
    std::string code;
    bool partial = false;
    std::vector<SReference> ids; ///< those that are read
    bool doubtful = false;       ///< something is wrong with an id or with what it is to match, and was told

    /// The identifiers in their order.
    std::vector<ErrorId> SortedIds() const;
};

/// What the files of a configuration say, wherever it can be made out.
struct SConfigurationModel
{
    bool listed = false;                  ///< the list of modules could be read
    std::vector<SDefinition> errors;      ///< in the order of loading
    std::map<ErrorId, std::size_t> index; ///< of two definitions the later one
    std::set<ErrorId> meant;              ///< identifiers that errors would have but for a slip that was told
    std::set<int> unidentifiedModes; ///< failure modes of errors that are not identified; -1: nor is that
    std::set<int> unreadModules;     ///< modules of which not all could be read; -1: nor is it known which
    std::vector<SPatternModel> patterns; ///< in the order of the file

    /// The error of that identifier, or kNoError.
    std::size_t Find(const ErrorId& id) const;
    /// Does a later definition take its place, so that no tree shows it?
    bool IsReplaced(std::size_t error) const;
    /// May it be that the error is there, and only something that was told hides it?
    bool MayExist(const ErrorId& id) const;
    /// Is it known which errors the set holds, and is none of them missing for a slip that was told?
    bool IsCertain(const STriggerSetModel& set) const;
    /// Does the reference name an error that is certainly not there?
    bool LeadsNowhere(const SReference& reference) const;
    /// Is it known which errors have which triggers, and is no link missing for something that was told?
    bool KnowsAllLinks() const;
    /// Of all errors that can be found, in the order of their identifiers.
    std::vector<std::string> Names() const;
};

} // namespace Faultkeeper::Apps

#endif
