#include "app/cli/command.h"

namespace kivo::cli {

Command *makeInfoCommand();
Command *makePaletteCommand();
Command *makeListCommand();
Command *makeSearchCommand();
Command *makeCollectionsCommand();
Command *makeCollectionCommand();
Command *makeFileCommand();
Command *makeTagCommand();
Command *makeFavouriteCommand();
Command *makeHideCommand();
Command *makeTrashCommand();
Command *makeRestoreCommand();
Command *makeImportCommand();
Command *makeAddLinkCommand();
Command *makeAddTextCommand();
Command *makeSidecarsCommand();
Command *makeDemoCommand();
Command *makeEnrichCommand();

const QList<Command *> &allCommands()
{
    static const QList<Command *> commands{
        makeInfoCommand(),
        makePaletteCommand(),
        makeListCommand(),
        makeSearchCommand(),
        makeCollectionsCommand(),
        makeCollectionCommand(),
        makeFileCommand(),
        makeTagCommand(),
        makeFavouriteCommand(),
        makeHideCommand(),
        makeTrashCommand(),
        makeRestoreCommand(),
        makeImportCommand(),
        makeAddLinkCommand(),
        makeAddTextCommand(),
        makeSidecarsCommand(),
        makeEnrichCommand(),
        makeDemoCommand(),
    };
    return commands;
}

} // namespace kivo::cli
