#pragma once

#include "support/wait.h"
#include "tnv5/host/local/local_line.h"
#include "tnv5/host/local/local_server.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace tnv5::tests {

/// A club in memory.
class TMemoryClub : public host::IClubControl
{
public:
    QJsonObject state() override
    {
        ++StatesAsked;
        return State;
    }
    QString open(const QString& gate, const QString& who, const QString& reason) override
    {
        Opened << gate + u'|' + who + u'|' + reason;
        if (OnOpen) {
            OnOpen();
        }
        return Trouble;
    }
    QString reload() override
    {
        ++Reloads;
        return Trouble;
    }
    QByteArray picture(const QString& card) override { return Pictures.value(card); }
    QJsonArray journal(qint64 after, int limit) override
    {
        Asked << QStringLiteral("%1+%2").arg(after).arg(limit);
        return Journal;
    }

    QJsonObject State = {{QStringLiteral("club"), QStringLiteral("Riverside")}};
    QString Trouble;
    QMap<QString, QByteArray> Pictures;
    QJsonArray Journal;
    QStringList Opened;
    QStringList Asked;
    int Reloads = 0;
    int StatesAsked = 0;
    std::function<void()> OnOpen;
};

inline QJsonObject json(const char* text)
{
    return QJsonDocument::fromJson(text).object();
}

inline std::string text(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
}

/// A program at the other end that says what it wants, byte by byte.
class TRawPeer
{
public:
    explicit TRawPeer(const QString& path)
    {
        QObject::connect(&FSocket, &QLocalSocket::readyRead, &FSocket, [this] {
            if (Reading) {
                FLines.add(FSocket.readAll());
            }
        });
        FSocket.connectToServer(path);
    }
    bool connected() const { return FSocket.state() == QLocalSocket::ConnectedState; }
    void say(const QByteArray& bytes)
    {
        FSocket.write(bytes);
        FSocket.flush();
    }
    /// The next line; empty when the connection ends first.
    QJsonObject hear()
    {
        std::optional<QByteArray> line;
        eventually([&] {
            FLines.add(Reading ? FSocket.readAll() : QByteArray());
            line = FLines.take();
            return line || (!connected() && FSocket.bytesAvailable() == 0);
        });
        return line ? host::fromLine(*line).value_or(QJsonObject()) : QJsonObject();
    }
    QJsonObject ask(const QByteArray& line)
    {
        say(line + '\n');
        return hear();
    }
    bool ended()
    {
        return eventually([this] { return !connected(); });
    }
    QLocalSocket& socket() { return FSocket; }

    bool Reading = true;

private:
    QLocalSocket FSocket;
    host::TLineBuffer FLines;
};

/// A club that listens.
class LocalServer : public ::testing::Test
{
protected:
    QString path() const { return FFolder.filePath(QStringLiteral("club.socket")); }

    QTemporaryDir FFolder;
    TMemoryClub club;
    std::unique_ptr<host::TLocalServer> server = std::make_unique<host::TLocalServer>(club, path());
};

} // namespace tnv5::tests
