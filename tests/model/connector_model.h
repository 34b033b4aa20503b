#pragma once

#include "model/kit/model_world.h"

#include <QStringList>

/// A second, deliberately plain line connector. Its names are those of the component; other models stand on
/// it.
namespace tnv5::connector::model {

using namespace modelkit;

enum EType { Empty, Serial, Net };

struct TModelBoard
{
    QString IP, Device, DeviceType;
    double LastPing = 0; // days
    int DisplayLine = -1;
};

class TModelConnector final : public TModel
{
public:
    using TEvent = std::function<void(TModel* Sender, const QString& Str)>;

    TModelConnector(TModelWorld& world, bool designing);
    void die() override;

    TModelPort* ComPort() const { return living(FPort); }
    void SetComport(TModelPort* port);
    void SetOnError(TEvent event) { FOnError = std::move(event); }
    void SetOnLog(TEvent event) { FOnLog = std::move(event); }
    void SetOnGetData(TEvent event) { FOnGetData = std::move(event); }
    const TEvent& OnError() const { return FOnError; }
    const TEvent& OnLog() const { return FOnLog; }
    const TEvent& OnGetData() const { return FOnGetData; }

    // texts by value: the host may change its own meanwhile
    bool GetConnected()
    {
        return operation([&] { return connected(); }, false);
    }
    void SetConnected(bool connected);
    QVariant property(const char* name)
    {
        return name == std::string("IsConnected") ? GetConnected() : TModel::property(name);
    }
    void setProperty(const char* name, const QVariant& value)
    {
        name == std::string("IsConnected") ? SetConnected(value.toBool()) : TModel::setProperty(name, value);
    }
    void CloseAll() {}
    void GetCommand(QString line)
    {
        operation([&] { pass(line); });
    }
    QString SendCommand(QString command)
    {
        return operation([&] { return SendHook ? SendHook(command) : send(command); }, QString());
    }
    void SendDirectCommand(QString ip, QString line)
    {
        operation([&] { write(ip, line); });
    }
    QString GetDiagnosticValue(const QString& text, const QString& key) const;
    TModelBoard* GetDeviceFromList(const QString& ip, const QString& address);
    void ProcessDataToDevice(QString ip, QString line)
    {
        operation([&] { process(ip, line); });
    }
    int DeviceCount() const { return int(FBoards.size()); }
    TModelBoard* DeviceItem(int index) const;

    /// Overrides of the virtual functions, and what they override.
    std::function<bool()> ConnectedHook;
    std::function<void(const QString& ip, const QString& line)> DirectHook;
    std::function<QString(const QString& command)> SendHook;
    bool BaseConnected();
    void BaseDirect(const QString& ip, const QString& line) { direct(ip, line); }

private:
    bool usesPort() const { return FProperties.at("ConnectorType").toInt() == Serial && ComPort(); }
    template <class Body>
    void reachPort(Body&& body);
    bool connected() { return ConnectedHook ? ConnectedHook() : BaseConnected(); }
    void direct(const QString& ip, const QString& line);
    void write(const QString& ip, const QString& line)
    {
        DirectHook ? DirectHook(ip, line) : direct(ip, line);
    }
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
    QStringList display(const QString& command, const QString& address, int width) const;
    void show(const QString& command, const QString& ip, const QString& address);

    TModelPort* FPort = nullptr;
    TEvent FOnError, FOnLog, FOnGetData;
    TModelSplitter FDollar, FHash;
    std::vector<std::unique_ptr<TModelBoard>> FBoards;
};

} // namespace tnv5::connector::model
