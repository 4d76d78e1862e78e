#pragma once

#include "platform/linux/MimeAssociations.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

namespace vindaro::platform {

// What the field codes of an Exec line stand for.
struct ExecFields
{
    QStringList files; // local paths, for %f %F %u %U (a path is a valid %u)
    QString icon; // %i: "--icon" and this, or nothing when empty
    QString name; // %c
    QString entryPath; // %k
};

// The command lines an Exec line of a desktop entry asks for (program first, then its arguments), with
// the field codes filled in. The line's escapes of the key file must already be undone.
//
// Arguments are separated by spaces and may be quoted as a whole in double quotes, inside which ", `, $
// and \ are written with a backslash; a reserved character outside quotes, an unknown field code, %F, %U
// or %i inside a longer argument, more than one file code, or a program name with "=" break the rules,
// and such a line gives nothing to run. Inside quotes nothing is expanded: a file name filled into a
// quoted argument that a shell may read would become a command. The deprecated codes (%d %D %n %N %v
// %m) are dropped. With %f or %u each file gets its own command line.
//
// A line without a file code is given the files at its end, as %f would: the user picked the program to
// open them.
QList<QStringList> expandExec(const QString& exec, const ExecFields& fields);

// The command lines that open `files` with the application: its Exec line expanded, run through
// `terminal` (for example {"x-terminal-emulator", "-e"}) when the entry asks for a terminal.
QList<QStringList> launchCommands(
    const DesktopApplication& application, const QStringList& files, const QStringList& terminal);

// The terminal to run an application in: Debian's x-terminal-emulator when installed, else xterm; both
// take the command after "-e".
QStringList defaultTerminal();

// Starts a program detached from this one, in `workingFolder` when not empty; false when it could not
// be started. Tests put a recorder in its place.
using Launcher
    = std::function<bool(const QString& program, const QStringList& arguments, const QString& workingFolder)>;
bool startDetached(const QString& program, const QStringList& arguments, const QString& workingFolder);

} // namespace vindaro::platform
