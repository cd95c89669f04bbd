#include "cli/manpage.h"

#include <QRegularExpression>

#include <algorithm>

namespace corvane::cli {

namespace {

// Text as roff shows it: backslashes and leading dots or quotes escaped.
QString roffLine(QString line)
{
    line.replace(QLatin1Char('\\'), QStringLiteral("\\e"));
    line.replace(QLatin1Char('-'), QStringLiteral("\\-"));
    if (line.startsWith(QLatin1Char('.')) || line.startsWith(QLatin1Char('\'')))
        line.prepend(QStringLiteral("\\&"));
    return line;
}

// A --help text kept as it is laid out, in a no-fill block.
QString verbatim(const QString& text)
{
    QString out = QStringLiteral(".nf\n");
    for (const QString& line : text.split(QLatin1Char('\n'))) {
        out += line.isEmpty() ? QStringLiteral(".sp\n") : roffLine(line) + QLatin1Char('\n');
    }
    while (out.endsWith(QStringLiteral(".sp\n")))
        out.chop(4);
    return out + QStringLiteral(".fi\n");
}

QList<Command> sorted(QList<Command> commands)
{
    std::sort(commands.begin(), commands.end(), [](const Command& a, const Command& b) { return a.name < b.name; });
    return commands;
}

} // namespace

QString manPage(const QString& globalHelp, const QList<Command>& commands, const QString& version)
{
    QString page;
    page += QStringLiteral(".TH CORVANE 1 \"\" \"corvane %1\" \"User Commands\"\n").arg(version);
    page += QStringLiteral(".SH NAME\ncorvane \\- the services of FBT that need no screen\n");
    page += QStringLiteral(".SH SYNOPSIS\n.B corvane\n[\\fIglobal options\\fR] \\fICOMMAND\\fR [\\fIarguments\\fR]\n");
    page += QStringLiteral(".SH DESCRIPTION\n") + verbatim(globalHelp);
    page += QStringLiteral(".SH COMMANDS\n");
    for (const Command& c : sorted(commands)) {
        page += QStringLiteral(".SS %1\n").arg(roffLine(c.name));
        page += verbatim(c.usage.trimmed());
    }
    page += QStringLiteral(".SH EXIT STATUS\n0 done, 1 the operation failed (its message on standard error), 2 wrong usage.\n");
    page += QStringLiteral(".SH FILES\n.TP\n.I ORVCONFIG.INI\n"
                           "The database server, in $CORVANE_SYSTEM_DIR, else /etc/orv\\-softworks when it exists, "
                           "else ~/.config/orv\\-softworks.\n"
                           ".TP\n.I Confg.ini, FBTLogger.log, MySQL/\n"
                           "Settings, error log and private database in the application folder.\n");
    return page;
}

QString bashCompletion(const QStringList& globalOptions, const QList<Command>& commands)
{
    QStringList names;
    QString cases;
    for (const Command& c : sorted(commands)) {
        names << c.name;
        QStringList options = c.valueOptions + c.flagOptions;
        options << QStringLiteral("--help");
        cases += QStringLiteral("        %1) opts=\"%2\" ;;\n").arg(c.name, options.join(QLatin1Char(' ')));
    }
    return QStringLiteral(
               "# bash completion for corvane\n"
               "_corvane()\n"
               "{\n"
               "    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} cmd= opts i\n"
               "    case $prev in\n"
               "        --app-path) COMPREPLY=($(compgen -d -- \"$cur\")); return ;;\n"
               "        --on-error) COMPREPLY=($(compgen -W 'abort retry ignore' -- \"$cur\")); return ;;\n"
               "    esac\n"
               "    for ((i = 1; i < COMP_CWORD; i++)); do\n"
               "        case \" %1 \" in *\" ${COMP_WORDS[i]} \"*) cmd=${COMP_WORDS[i]}; break ;; esac\n"
               "    done\n"
               "    if [ -z \"$cmd\" ]; then\n"
               "        COMPREPLY=($(compgen -W '%1 %2' -- \"$cur\"))\n"
               "        return\n"
               "    fi\n"
               "    case $cmd in\n"
               "%3"
               "    esac\n"
               "    if [[ $cur == -* ]]; then\n"
               "        COMPREPLY=($(compgen -W \"$opts\" -- \"$cur\"))\n"
               "    else\n"
               "        COMPREPLY=($(compgen -f -- \"$cur\"))\n"
               "    fi\n"
               "}\n"
               "complete -F _corvane corvane\n")
        .arg(names.join(QLatin1Char(' ')), globalOptions.join(QLatin1Char(' ')), cases);
}

} // namespace corvane::cli
