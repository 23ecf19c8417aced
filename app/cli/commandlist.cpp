#include "app/cli/command.h"

namespace kivo::cli {

Command *makeInfoCommand();
Command *makePaletteCommand();

const QList<Command *> &allCommands()
{
    static const QList<Command *> commands{
        makeInfoCommand(),
        makePaletteCommand(),
    };
    return commands;
}

} // namespace kivo::cli
