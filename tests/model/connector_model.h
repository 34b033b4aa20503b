#pragma once

#include "model/connector_link_model.h"

#include <memory>

/// A second, deliberately plain line connector, made without any of the component's code, so that random
/// scenarios can be played to both and their traces compared. Its names are those of the component.
namespace tnv5::connector::model {

struct TModelBoard
{
    QString IP;
    QString Device;
    QString DeviceType;
    double LastPing = 0;
    int DisplayLine = -1;
};

class TModelConnector
{
public:
    using TEvent = std::function<void(TModelConnector* Sender, const QString& Str)>;

    TModelConnector(TModelWorld& world, bool designing);

    TModelPort* ComPort() const { return FPort != nullptr && !FPort->dead() ? FPort : nullptr; }
    void SetComport(TModelPort* port);
    int ConnectorType() const { return FType; }
    void SetConnectorType(int type) { FType = type; }
    void SetOnError(TEvent event) { FOnError = std::move(event); }
    void SetOnLog(TEvent event) { FOnLog = std::move(event); }
    void SetOnGetData(TEvent event) { FOnGetData = std::move(event); }
    const TEvent& OnError() const { return FOnError; }
    const TEvent& OnLog() const { return FOnLog; }
    const TEvent& OnGetData() const { return FOnGetData; }

    bool GetConnected();
    void SetConnected(bool connected);
    void CloseAll() {}
    void GetCommand(const QString& line);
    QString SendCommand(const QString& command);
    void SendDirectCommand(const QString& ip, const QString& line);
    QString GetDiagnosticValue(const QString& text, const QString& key) const;
    TModelBoard* GetDeviceFromList(const QString& ip, const QString& address);
    void ProcessDataToDevice(const QString& ip, const QString& line);
    int DeviceCount() const { return static_cast<int>(FBoards.size()); }
    TModelBoard* DeviceItem(int index) const;

    /// Overrides of the two virtual functions, and what they override.
    std::function<bool()> ConnectedHook;
    std::function<void(const QString& ip, const QString& line)> DirectHook;
    bool BaseConnected();
    void BaseDirect(const QString& ip, const QString& line);

    /// Destroyed; the memory stays, so that calls under way find out.
    void die();

private:
    void reach(const char* branch) const { FWorld.coverage.reach(branch); }
    template <class Body>
    void callOut(Body body);
    template <class Body>
    void attempt(Body body);
    template <class Body>
    void operation(Body body);
    void fire(const TEvent& event, const QString& text);
    bool connected();
    void direct(const QString& ip, const QString& line);
    void onPacket(char start, const QByteArray& packet);
    void onPortError(const QString& message, qint64 osError);
    QString digits(const QString& line) const;
    QString checked(const QString& line) const { return line + digits(line); }
    void pass(const QString& line);

    void process(const QString& ip, const QString& line);
    void processHash(const QString& ip, const QString& line, TModelBoard* board);
    void processHardware(const QString& ip, const QString& line, TModelBoard* board);
    void learnWidth(const QString& line, TModelBoard* board);
    void processDollar(const QString& ip, const QString& line, const TModelBoard* board);
    QString send(const QString& command);
    QStringList shown(const QString& command, const QString& address, int width) const;
    void show(const QString& command, const QString& ip, const QString& address);

    TModelWorld& FWorld;
    bool FDesigning;
    bool FDead = false;
    int FType = 0;
    TModelPort* FPort = nullptr;
    TEvent FOnError;
    TEvent FOnLog;
    TEvent FOnGetData;
    std::unique_ptr<TModelSplitter> FDollar;
    std::unique_ptr<TModelSplitter> FHash;
    std::vector<std::unique_ptr<TModelBoard>> FBoards;
};

} // namespace tnv5::connector::model
