#include "import/SNImportLedger.h"

#include "kit/QWFileReplacer.h"

#include <QFile>
#include <QSaveFile>
#include <QUrl>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

const QString SNImportLedger::fileName = QStringLiteral("Imported Notes.txt");

SNImportLedger::SNImportLedger(const QString &folder) : m_path(folder + fileName)
{
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    while (!file.atEnd()) {
        const QList<QByteArray> fields = file.readLine(64 * 1024).trimmed().split('\t');
        if (fields.size() != 3)
            continue;
        const QString program = QString::fromUtf8(fields[0]);
        const QString source = QUrl::fromPercentEncoding(fields[1]);
        const QUuid noteId = QUuid::fromString(QString::fromLatin1(fields[2]));
        if (program.isEmpty() || source.isEmpty())
            continue;
        const QString k = key(program, source);
        if (!m_noteIds.contains(k))
            m_order.append(k);
        m_noteIds.insert(k, noteId);
    }
}

bool SNImportLedger::contains(const QString &programId, const QString &sourceId) const
{
    return m_noteIds.contains(key(programId, sourceId));
}

qsizetype SNImportLedger::countImported(
    const QString &programId, const QList<SNImportedNote> &notes) const
{
    return std::count_if(notes.cbegin(), notes.cend(),
        [&](const SNImportedNote &note) { return contains(programId, note.sourceId); });
}

void SNImportLedger::add(const QString &programId, const QString &sourceId, const QUuid &noteId)
{
    const QString k = key(programId, sourceId);
    if (!m_noteIds.contains(k))
        m_order.append(k);
    m_noteIds.insert(k, noteId);
}

bool SNImportLedger::save(QString *error) const
{
    QByteArray data;
    for (const QString &k : m_order) {
        const qsizetype tab = k.indexOf(u'\t');
        data += k.left(tab).toUtf8() + '\t' + QUrl::toPercentEncoding(k.mid(tab + 1)) + '\t'
            + m_noteIds.value(k).toString(QUuid::WithoutBraces).toLatin1() + '\n';
    }
    QSaveFile file(m_path);
    return QWFileReplacer::replace(file, data, error);
}

QString SNImportLedger::key(const QString &programId, const QString &sourceId)
{
    return programId + u'\t' + sourceId;
}
