#include "support/QWSyncthingPeer.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QJsonObject>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QTest>
#include <QUuid>

#include <csignal>
#include <sys/prctl.h>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString program = u"syncthing"_s;

// Sets one element's text in the configuration Syncthing generated; false when it has none.
bool setElement(QString &xml, const QString &name, const QString &value)
{
    const QRegularExpression element(u"<%1>[^<]*</%1>"_s.arg(name));
    if (!xml.contains(element))
        return false;
    xml.replace(element, u"<%1>%2</%1>"_s.arg(name, value.toHtmlEscaped()));
    return true;
}

// Sets an attribute of the first element that has it.
bool setAttribute(QString &xml, const QString &name, const QString &value)
{
    const QRegularExpressionMatch match
        = QRegularExpression(u"\\s%1=\"([^\"]*)\""_s.arg(name)).match(xml);
    if (!match.hasMatch())
        return false;
    xml.replace(match.capturedStart(1), match.capturedLength(1), value.toHtmlEscaped());
    return true;
}

// The template Syncthing keeps for a new element of that name (the one with no id yet).
QString unsetDefault(const QString &xml, const QString &name)
{
    return QRegularExpression(
        u"<%1 id=\"\"[^>]*>.*?</%1>"_s.arg(name), QRegularExpression::DotMatchesEverythingOption)
        .match(xml)
        .captured();
}

} // namespace

QWSyncthingPeer::QWSyncthingPeer(const QString &name)
    : m_name(name), m_apiKey(QUuid::createUuid().toString(QUuid::Id128))
{
    QProcess generate;
    generate.setProcessChannelMode(QProcess::MergedChannels);
    generate.start(program,
        { u"generate"_s, u"--home=%1"_s.arg(m_home.path()), u"--no-default-folder"_s,
            u"--skip-port-probing"_s });
    if (!generate.waitForFinished(60000) || generate.exitCode() != 0)
        return;
    const QRegularExpressionMatch id
        = QRegularExpression(u"Device ID: ([A-Z0-9-]+)"_s)
              .match(QString::fromUtf8(generate.readAllStandardOutput()));
    if (id.hasMatch() && m_syncPortHold.listen(QHostAddress::LocalHost, 0)
        && m_guiPortHold.listen(QHostAddress::LocalHost, 0)) {
        m_deviceId = id.captured(1);
        m_syncPort = m_syncPortHold.serverPort();
        m_guiPort = m_guiPortHold.serverPort();
    }
}

QWSyncthingPeer::~QWSyncthingPeer()
{
    if (m_syncthing.state() != QProcess::NotRunning) {
        m_syncthing.kill();
        m_syncthing.waitForFinished();
    }
}

QByteArray QWSyncthingPeer::log() const
{
    QFile file(m_home.filePath(u"syncthing.log"_s));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool QWSyncthingPeer::writeConfig(const QWSyncthingPeer &other)
{
    QFile file(m_home.filePath(u"config.xml"_s));
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QString xml = QString::fromUtf8(file.readAll());
    file.close();

    // Reached only through the loopback address, and reaching nothing but the other peer.
    const QList<std::pair<QString, QString>> options {
        { u"listenAddress"_s, u"tcp://127.0.0.1:%1"_s.arg(m_syncPort) },
        { u"globalAnnounceEnabled"_s, u"false"_s },
        { u"localAnnounceEnabled"_s, u"false"_s },
        { u"relaysEnabled"_s, u"false"_s },
        { u"natEnabled"_s, u"false"_s },
        { u"urAccepted"_s, u"-1"_s },
        { u"crashReportingEnabled"_s, u"false"_s },
        { u"autoUpgradeIntervalH"_s, u"0"_s },
        { u"startBrowser"_s, u"false"_s },
        // A resumed peer is dialled again at once rather than within the minute.
        { u"reconnectionIntervalS"_s, u"1"_s },
    };
    for (const auto &[name, value] : options) {
        if (!setElement(xml, name, value))
            return false;
    }

    // The folder and the other device as Syncthing's own defaults make them. The folder's
    // changes are seen by the file watcher within a second, or by a rescan soon after.
    QString folder = unsetDefault(xml, u"folder"_s);
    QString device = unsetDefault(xml, u"device"_s);
    const QString otherAddress = u"tcp://127.0.0.1:%1"_s.arg(other.m_syncPort);
    const qsizetype gui = xml.indexOf(u"<gui "_s);
    if (gui < 0 || !setAttribute(folder, u"id"_s, folderId)
        || !setAttribute(folder, u"label"_s, u"Vellumo"_s)
        || !setAttribute(folder, u"path"_s, folderPath())
        || !setAttribute(folder, u"rescanIntervalS"_s, u"5"_s)
        || !setAttribute(folder, u"fsWatcherEnabled"_s, u"true"_s)
        || !setAttribute(folder, u"fsWatcherDelayS"_s, u"1"_s)
        || !setAttribute(device, u"id"_s, other.m_deviceId)
        || !setElement(device, u"address"_s, otherAddress))
        return false;
    // The template lists this device; the other joins it.
    const QString deviceEnd = u"</device>"_s;
    const qsizetype ownDevice = folder.indexOf(deviceEnd);
    if (ownDevice < 0)
        return false;
    folder.insert(
        ownDevice + deviceEnd.size(), u"<device id=\"%1\"></device>"_s.arg(other.m_deviceId));
    xml.insert(gui, folder + u'\n' + device + u'\n');

    // Syncthing shares only a folder that carries its marker.
    if (!QDir().mkpath(folderPath() + u"/.stfolder"_s) || !file.open(QIODevice::WriteOnly))
        return false;
    return file.write(xml.toUtf8()) > 0 && file.flush();
}

bool QWSyncthingPeer::start(const QWSyncthingPeer &other)
{
    if (!isValid() || !other.isValid() || !writeConfig(other))
        return false;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"STNODEFAULTFOLDER"_s, u"1"_s);
    environment.insert(u"STNOUPGRADE"_s, u"1"_s);
    // Syncthing runs as one process, without the monitor that would outlive a kill of it.
    environment.insert(u"STMONITORED"_s, u"yes"_s);
    m_syncthing.setProcessEnvironment(environment);
    m_syncPortHold.close();
    m_guiPortHold.close();
    m_syncthing.setProcessChannelMode(QProcess::MergedChannels);
    m_syncthing.setStandardOutputFile(m_home.filePath(u"syncthing.log"_s));
    // Gone with the test even when the test itself dies.
    m_syncthing.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    m_syncthing.start(program,
        { u"serve"_s, u"--home=%1"_s.arg(m_home.path()), u"--no-browser"_s, u"--no-restart"_s,
            u"--no-upgrade"_s, u"--gui-address=http://127.0.0.1:%1"_s.arg(m_guiPort),
            u"--gui-apikey=%1"_s.arg(m_apiKey) });
    if (!m_syncthing.waitForStarted())
        return false;
    return QTest::qWaitFor(
               [this] {
                   return m_syncthing.state() != QProcess::Running
                       || request("GET", u"/rest/system/ping"_s).object().value(u"ping"_s)
                       == u"pong"_s;
               },
               30000)
        && m_syncthing.state() == QProcess::Running;
}

QJsonDocument QWSyncthingPeer::request(const QByteArray &verb, const QString &pathAndQuery)
{
    QNetworkRequest message(
        QUrl(u"http://127.0.0.1:%1%2"_s.arg(QString::number(m_guiPort), pathAndQuery)));
    message.setRawHeader("X-API-Key", m_apiKey.toLatin1());
    message.setTransferTimeout(30000);
    QNetworkReply *reply = m_network.sendCustomRequest(message, verb);
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    reply->deleteLater();
    if (reply->error() != QNetworkReply::NoError)
        return QJsonDocument();
    const QByteArray body = reply->readAll();
    // Some calls answer with nothing but their status.
    return body.trimmed().isEmpty() ? QJsonDocument(QJsonObject()) : QJsonDocument::fromJson(body);
}

bool QWSyncthingPeer::setPeerPaused(const QWSyncthingPeer &other, bool paused)
{
    const QString path = paused ? u"/rest/system/pause"_s : u"/rest/system/resume"_s;
    return !request("POST", path + u"?device="_s + other.m_deviceId).isNull();
}

bool QWSyncthingPeer::connectedTo(const QWSyncthingPeer &other)
{
    return request("GET", u"/rest/system/connections"_s)
        .object()
        .value(u"connections"_s)
        .toObject()
        .value(other.m_deviceId)
        .toObject()
        .value(u"connected"_s)
        .toBool();
}

bool QWSyncthingPeer::scan()
{
    // Answers once the scan is over.
    return !request("POST", u"/rest/db/scan?folder="_s + folderId).isNull();
}

bool QWSyncthingPeer::folderIdle()
{
    const QJsonObject status = request("GET", u"/rest/db/status?folder="_s + folderId).object();
    return status.value(u"state"_s) == u"idle"_s && status.contains(u"needTotalItems"_s)
        && status.value(u"needTotalItems"_s).toInt() == 0;
}

bool QWSyncthingPeer::seesComplete(const QWSyncthingPeer &other)
{
    const QJsonObject completion = request(
        "GET", u"/rest/db/completion?folder=%1&device=%2"_s.arg(folderId, other.m_deviceId))
                                       .object();
    return completion.value(u"completion"_s).toDouble() == 100
        && completion.value(u"needItems"_s).toInt(-1) == 0
        && completion.value(u"needDeletes"_s).toInt(-1) == 0;
}

bool QWSyncthingPeer::inSync(QWSyncthingPeer &a, QWSyncthingPeer &b)
{
    return a.connectedTo(b) && b.connectedTo(a) && a.scan() && b.scan() && a.folderIdle()
        && b.folderIdle() && a.seesComplete(b) && b.seesComplete(a);
}
