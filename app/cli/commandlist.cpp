#include "app/cli/command.h"

namespace kivo::cli {

Command *makeInfoCommand();
Command *makePaletteCommand();
Command *makeListCommand();
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

const QList<Command *> &allCommands()
{
    static const QList<Command *> commands{
        makeInfoCommand(),
        makePaletteCommand(),
        makeListCommand(),
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
        makeDemoCommand(),
    };
    return commands;
}

} // namespace kivo::cli
