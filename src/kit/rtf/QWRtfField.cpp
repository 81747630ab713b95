#include "kit/rtf/QWRtfField.h"

#include <QStringList>

namespace {

// Field arguments: quoted strings, where a backslash takes the next character literally, or
// runs of characters up to white space. Switches such as "\l" come out as arguments too.
QStringList fieldArguments(QStringView instruction)
{
    QStringList arguments;
    qsizetype at = 0;
    const qsizetype size = instruction.size();
    while (at < size) {
        while (at < size && instruction[at].isSpace())
            ++at;
        if (at >= size)
            break;
        QString argument;
        if (instruction[at] == u'"') {
            for (++at; at < size && instruction[at] != u'"'; ++at) {
                if (instruction[at] == u'\\' && at + 1 < size)
                    ++at;
                argument.append(instruction[at]);
            }
            ++at; // the closing quote
        } else {
            while (at < size && !instruction[at].isSpace())
                argument.append(instruction[at++]);
        }
        arguments.append(argument);
    }
    return arguments;
}

bool isSwitch(const QString &argument)
{
    return argument.size() == 2 && argument[0] == u'\\';
}

// HYPERLINK switches that take an argument: location, target frame, screen tip, … .
bool switchTakesArgument(QChar name)
{
    return name == u'l' || name == u'o' || name == u't' || name == u's';
}

} // namespace

QString QWRtfField::linkFromInstruction(QStringView instruction)
{
    const QStringList arguments = fieldArguments(instruction);
    if (arguments.isEmpty() || arguments.first().compare(u"HYPERLINK", Qt::CaseInsensitive) != 0)
        return {};
    QString target;
    QString location;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (isSwitch(argument)) {
            const QChar name = argument[1].toLower();
            if (switchTakesArgument(name) && i + 1 < arguments.size()) {
                if (name == u'l')
                    location = arguments.at(i + 1);
                ++i;
            }
        } else if (target.isEmpty()) {
            target = argument;
        }
    }
    if (location.isEmpty())
        return target;
    return target + u'#' + location;
}

QString QWRtfField::instructionForLink(const QString &url)
{
    QString escaped;
    escaped.reserve(url.size());
    for (const QChar c : url) {
        if (c == u'"' || c == u'\\')
            escaped.append(u'\\');
        escaped.append(c);
    }
    return QStringLiteral("HYPERLINK \"") + escaped + u'"';
}
