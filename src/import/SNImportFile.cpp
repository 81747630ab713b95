#include "import/SNImportFile.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringDecoder>

using namespace Qt::Literals::StringLiterals;

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("SNImportFile", text);
}

} // namespace

std::optional<QByteArray> SNImportFile::read(const QString &path, QString *reason, qint64 maximum)
{
    const auto fail = [reason](const QString &why) -> std::optional<QByteArray> {
        if (reason)
            *reason = why;
        return std::nullopt;
    };
    const QFileInfo info(path);
    if (!info.exists())
        return fail(tr("The file is missing."));
    if (!info.isFile())
        return fail(tr("It is not a file."));
    if (info.size() > maximum)
        return fail(tr("The file is larger than %1 MB.").arg(maximum / (1024 * 1024)));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(tr("The file cannot be read: %1").arg(file.errorString()));
    // A file that grows while it is read (a program saving it) still stops at the bound.
    QByteArray bytes = file.read(maximum + 1);
    if (bytes.size() > maximum)
        return fail(tr("The file is larger than %1 MB.").arg(maximum / (1024 * 1024)));
    return bytes;
}

SNImportReadResult SNImportFile::parse(const QString &path, const Parser &parser)
{
    QString reason;
    const std::optional<QByteArray> bytes = read(path, &reason);
    if (!bytes) {
        SNImportReadResult result;
        result.problems.append({ QFileInfo(path).fileName(), reason });
        return result;
    }
    return parser(*bytes, modificationTime(path));
}

QString SNImportFile::decodeText(const QByteArray &bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8.decode(bytes);
    if (utf8.hasError())
        return QString::fromLatin1(bytes);
    if (text.startsWith(QChar(0xFEFF)))
        text.remove(0, 1);
    return text;
}

QDateTime SNImportFile::dateFromIsoString(QStringView text)
{
    static const QRegularExpression pattern(
        uR"(^\s*(\d{4})-(\d{2})-(\d{2})[T ](\d{2}):(\d{2}):(\d{2})(?:[.,](\d+))?\s*(Z|[+-]\d{2}:?\d{2})?\s*$)"_s);
    const QRegularExpressionMatch match = pattern.match(text.toString());
    if (!match.hasMatch())
        return {};
    const QDate date(match.capturedView(1).toInt(), match.capturedView(2).toInt(),
        match.capturedView(3).toInt());
    const QString fraction = (match.captured(7) + u"000"_s).left(3);
    const QTime time(match.capturedView(4).toInt(), match.capturedView(5).toInt(),
        match.capturedView(6).toInt(), fraction.toInt());
    if (!date.isValid() || !time.isValid())
        return {};
    const QString zone = match.captured(8);
    if (zone.isEmpty())
        return QDateTime(date, time); // local time, as the program wrote it
    if (zone == u"Z"_s)
        return QDateTime(date, time, Qt::UTC);
    QString digits = zone.mid(1);
    digits.remove(u':');
    const int hours = digits.left(2).toInt();
    const int minutes = digits.mid(2).toInt();
    if (hours > 14 || minutes > 59)
        return {};
    const int offset = (zone.startsWith(u'-') ? -1 : 1) * (hours * 3600 + minutes * 60);
    return QDateTime(date, time, Qt::OffsetFromUTC, offset);
}

std::optional<QDateTime> SNImportFile::modificationTime(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return std::nullopt;
    return info.lastModified();
}
