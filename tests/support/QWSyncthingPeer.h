#pragma once

#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QProcess>
#include <QTcpServer>
#include <QTemporaryDir>

// One real Syncthing for a test: a home and ports of its own on the loopback address, nothing
// announced or reached beyond it, and one folder shared with one other peer. Its REST API,
// reached with the key it was given, pauses and resumes that peer and tells when the two agree.
// Syncthing is killed with the object.
class QWSyncthingPeer final
{
public:
    static inline const QString folderId = QStringLiteral("vellumo-sync");

    // Makes the device's keys; false from isValid() when Syncthing could not.
    explicit QWSyncthingPeer(const QString &name);
    ~QWSyncthingPeer();
    QWSyncthingPeer(const QWSyncthingPeer &) = delete;
    QWSyncthingPeer &operator=(const QWSyncthingPeer &) = delete;

    bool isValid() const { return !m_deviceId.isEmpty(); }
    QString name() const { return m_name; }
    // The shared folder, as it lies on this peer.
    QString folderPath() const { return m_home.filePath(QStringLiteral("folder")); }
    // Syncthing's own output so far, for a failure message.
    QByteArray log() const;

    // Starts Syncthing knowing `other` and sharing the folder with it, and waits until its REST
    // API answers; false when it does not.
    bool start(const QWSyncthingPeer &other);
    // Whether the two are connected now.
    bool connectedTo(const QWSyncthingPeer &other);
    // Closes (or opens again) the connection to the other peer: nothing passes while paused.
    bool setPeerPaused(const QWSyncthingPeer &other, bool paused);
    // Whether each has what the other has, after both looked at their folders now: connected,
    // neither needing anything, each seeing the other complete.
    static bool inSync(QWSyncthingPeer &a, QWSyncthingPeer &b);

private:
    bool writeConfig(const QWSyncthingPeer &other);
    bool scan();
    bool folderIdle();
    bool seesComplete(const QWSyncthingPeer &other);
    // One request to the REST API; a null document when it failed.
    QJsonDocument request(const QByteArray &verb, const QString &pathAndQuery);

    QString m_name;
    QTemporaryDir m_home;
    QString m_deviceId;
    QString m_apiKey;
    // Held until Syncthing starts, so that the other peer cannot be given the same ports.
    QTcpServer m_syncPortHold;
    QTcpServer m_guiPortHold;
    quint16 m_syncPort = 0;
    quint16 m_guiPort = 0;
    QProcess m_syncthing;
    QNetworkAccessManager m_network;
};
