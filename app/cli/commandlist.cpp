#include "app/cli/command.h"

namespace kivo::cli {

Command *makeInfoCommand();

const QList<Command *> &allCommands()
{
    static const QList<Command *> commands{
        makeInfoCommand(),
    };
    return commands;
}

} // namespace kivo::cli
