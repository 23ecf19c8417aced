#pragma once

#include "core/records.h"

#include <QJsonValue>
#include <QString>
#include <QStringList>
#include <QTextStream>

namespace kivo::cli {

/** What a headless command gets: its own arguments, the output form, and where to write. */
struct CommandContext {
    QStringList arguments; // after the command's name, global switches removed
    bool json = false;
    QTextStream &out;
    QTextStream &err;

    /** Prints a failure as one line on standard error and returns the exit code 1. */
    int fail(const QString &line) const;
    /** Prints a usage error and returns the exit code 2. */
    int usageError(const QString &line) const;
    /** Prints a JSON value on one line of standard output. */
    void printJson(const QJsonValue &value) const;
    /** Prints rows as a JSON array of records, or one line each (id, kind, label); returns 0. */
    int printItems(const QList<LibraryItem> &items) const;
};

/** One headless command of the `kivo` binary. */
class Command
{
public:
    virtual ~Command() = default;
    [[nodiscard]] virtual QString name() const = 0;
    /** Arguments after the name, as shown by --help. */
    [[nodiscard]] virtual QString synopsis() const = 0;
    [[nodiscard]] virtual QString summary() const = 0;
    /** Whether the command paints (fonts, pictures): it then runs on an off-screen GUI application. */
    [[nodiscard]] virtual bool needsGui() const { return false; }
    virtual int run(CommandContext &context) = 0;
};

/** What a row is called in a listing: its title, else its address or file, else its id. */
[[nodiscard]] QString itemLabel(const LibraryItem &item);

/** Every command, in the order --help lists them. */
[[nodiscard]] const QList<Command *> &allCommands();

} // namespace kivo::cli
