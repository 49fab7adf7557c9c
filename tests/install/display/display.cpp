#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>
#include <Faultkeeper/ErrorOverlay.h>
#include <Faultkeeper/ErrorPresentation.h>

#include <cstdio>

// Shows the active faults of the owner in the current directory; the argument is the configuration's
// directory.
int main(int argumentCount, char** arguments)
{
    const std::string configuration = argumentCount > 1 ? std::string(arguments[1]) + "/" : "";
    Faultkeeper::CErrorDatabase database(configuration);
    const Faultkeeper::CErrorOverlay overlay(configuration);
    Faultkeeper::CErrorDatabaseView view(false, Faultkeeper::eViewReader);
    view.Synchronise(database);
    std::vector<Faultkeeper::SErrorTree> trees;
    Faultkeeper::CErrorPresentation::GetErrorTree(view, overlay, database.ActiveErrors(false), trees, false);
    for (const Faultkeeper::SErrorTree& tree : trees)
        std::printf("%s\n", tree.title.c_str());
    return database.Loaded() && view.FaultkeeperReady() ? 0 : 1;
}
