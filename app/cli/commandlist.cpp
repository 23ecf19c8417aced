#include "app/cli/command.h"

namespace kivo::cli {

Command *makeInfoCommand();
Command *makeSidecarsCommand();
Command *makeDemoCommand();

const QList<Command *> &allCommands()
{
    static const QList<Command *> commands{
        makeInfoCommand(),
        makeSidecarsCommand(),
        makeDemoCommand(),
    };
    return commands;
}

} // namespace kivo::cli
