#include "DesktopExec.h"

#include <QProcess>
#include <QStandardPaths>

#include <optional>

namespace vindaro::platform {

namespace {

struct Word
{
    QString text;
    bool quoted = false;
};

// Characters that an unquoted argument may not hold; a quoted one must escape the second set.
const QString kReserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`");
const QString kEscapedInQuotes = QStringLiteral("\"`$\\");

// The line split into words; nothing when its quoting is broken.
std::optional<QList<Word>> splitWords(const QString& line)
{
    QList<Word> words;
    qsizetype i = 0;
    const qsizetype n = line.size();
    while (i < n) {
        if (line.at(i) == QLatin1Char(' ')) {
            ++i;
            continue;
        }
        Word word;
        if (line.at(i) == QLatin1Char('"')) {
            word.quoted = true;
            bool closed = false;
            for (++i; i < n && !closed; ++i) {
                const QChar c = line.at(i);
                if (c == QLatin1Char('"')) {
                    closed = true;
                } else if (c == QLatin1Char('\\')) {
                    if (i + 1 == n || !kEscapedInQuotes.contains(line.at(i + 1)))
                        return std::nullopt;
                    word.text += line.at(++i);
                } else if (kEscapedInQuotes.contains(c)) {
                    return std::nullopt;
                } else {
                    word.text += c;
                }
            }
            // Quoted as a whole: the closing quote ends the argument.
            if (!closed || (i < n && line.at(i) != QLatin1Char(' ')))
                return std::nullopt;
        } else {
            for (; i < n && line.at(i) != QLatin1Char(' '); ++i) {
                if (kReserved.contains(line.at(i)))
                    return std::nullopt;
                word.text += line.at(i);
            }
        }
        words << word;
    }
    return words;
}

// One command line; `files` are those this line gets (all for %F and %U, one or none for %f and %u).
// Nothing when a code is unknown or misplaced.
std::optional<QStringList> expandWords(
    const QList<Word>& words, const QStringList& files, const ExecFields& fields)
{
    QStringList arguments;
    for (const Word& word : words) {
        if (word.quoted) {
            arguments << word.text;
            continue;
        }
        if (word.text == QLatin1String("%F") || word.text == QLatin1String("%U")) {
            arguments += files;
            continue;
        }
        if (word.text == QLatin1String("%i")) {
            if (!fields.icon.isEmpty())
                arguments << QStringLiteral("--icon") << fields.icon;
            continue;
        }
        if (word.text == QLatin1String("%f") || word.text == QLatin1String("%u")) {
            if (!files.isEmpty())
                arguments << files.first();
            continue;
        }
        QString text;
        bool onlyDropped = true; // the word was nothing but deprecated codes: it goes altogether
        for (qsizetype i = 0; i < word.text.size(); ++i) {
            const QChar c = word.text.at(i);
            if (c != QLatin1Char('%')) {
                text += c;
                onlyDropped = false;
                continue;
            }
            if (++i == word.text.size())
                return std::nullopt;
            switch (word.text.at(i).unicode()) {
            case 'f':
            case 'u':
                text += files.value(0);
                onlyDropped = false;
                break;
            case 'c':
                text += fields.name;
                onlyDropped = false;
                break;
            case 'k':
                text += fields.entryPath;
                onlyDropped = false;
                break;
            case '%':
                text += QLatin1Char('%');
                onlyDropped = false;
                break;
            case 'd':
            case 'D':
            case 'n':
            case 'N':
            case 'v':
            case 'm':
                break;
            default: // %F %U %i inside a longer argument, or a code the desktop does not know
                return std::nullopt;
            }
        }
        if (!onlyDropped)
            arguments << text;
    }
    return arguments;
}

} // namespace

QList<QStringList> expandExec(const QString& exec, const ExecFields& fields)
{
    const std::optional<QList<Word>> split = splitWords(exec);
    if (!split || split->isEmpty())
        return {};
    QList<Word> words = *split;
    const Word& program = words.first();
    // The program is named as it stands: a code there would make a file name (or a percent sign) the
    // thing that runs.
    if (program.text.isEmpty() || program.text.contains(QLatin1Char('='))
        || (!program.quoted && program.text.contains(QLatin1Char('%'))))
        return {};

    // The file codes: at most one, anywhere but inside quotes.
    int fileCodes = 0;
    bool eachFileApart = true;
    for (const Word& word : std::as_const(words)) {
        if (word.quoted)
            continue;
        for (qsizetype at = word.text.indexOf(QLatin1Char('%')); at >= 0 && at + 1 < word.text.size();
             at = word.text.indexOf(QLatin1Char('%'), at + 2)) {
            const QChar code = word.text.at(at + 1);
            if (code == QLatin1Char('f') || code == QLatin1Char('u')) {
                ++fileCodes;
            } else if (code == QLatin1Char('F') || code == QLatin1Char('U')) {
                ++fileCodes;
                eachFileApart = false;
            }
        }
    }
    if (fileCodes > 1)
        return {};
    if (fileCodes == 0 && !fields.files.isEmpty())
        words << Word{QStringLiteral("%f"), false};

    QList<QStringList> commands;
    QList<QStringList> fileSets;
    if (eachFileApart && fields.files.size() > 1) {
        for (const QString& file : fields.files)
            fileSets << QStringList{file};
    } else {
        fileSets << fields.files;
    }
    for (const QStringList& files : std::as_const(fileSets)) {
        const std::optional<QStringList> command = expandWords(words, files, fields);
        if (!command)
            return {};
        commands << *command;
    }
    return commands;
}

QList<QStringList> launchCommands(
    const DesktopApplication& application, const QStringList& files, const QStringList& terminal)
{
    QList<QStringList> commands = expandExec(
        application.exec, ExecFields{files, application.icon, application.name, application.entryPath});
    if (application.terminal) {
        for (QStringList& command : commands)
            command = terminal + command;
    }
    return commands;
}

QStringList defaultTerminal()
{
    const QString debian = QStringLiteral("x-terminal-emulator");
    const QString program
        = QStandardPaths::findExecutable(debian).isEmpty() ? QStringLiteral("xterm") : debian;
    return {program, QStringLiteral("-e")};
}

bool startDetached(const QString& program, const QStringList& arguments, const QString& workingFolder)
{
    return QProcess::startDetached(program, arguments, workingFolder);
}

} // namespace vindaro::platform
