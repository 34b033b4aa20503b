#pragma once

#include "model/turnstile_gate.h"

#include <array>
#include <memory>

namespace tnv5::turnstile::model {

/// One branch of the model's behaviour, and how often it was reached since the program began.
struct TBranch
{
    const char* name;
    qint64 count = 0;
};
/// All of them, also those that were never reached.
const std::vector<TBranch*>& branches();

/// Windows-1251, the code page of the line.
QString textOf(const QByteArray& bytes);
QByteArray bytesOf(const QString& text);

/// The reference: small, slow and obvious. Shares no code with the component.
class TModelGate final : public IGate
{
public:
    TModelGate(IHost& host, qint64 startMs);
    ~TModelGate() override;

    void create(bool designing) override;
    void destroy() override;
    bool alive() const override { return FCore != nullptr; }

    void feed(int port, const QByteArray& bytes) override;
    void setOpen(int port, bool open) override;
    void setWriteFailure(int port, const QString& message) override;
    void renewPort(int port) override;
    void assignPort(int port) override;
    int assignedPort() const override;

    qint64 nowMs() const override { return FNow; }
    void advance(qint64 ms) override;
    void jumpTo(qint64 ms) override;

    void setNumber(TNumber which, int value) override;
    int number(TNumber which) const override;
    void setText(TText which, const QString& value) override;
    QString text(TText which) const override;
    void setMode(TMode mode) override;
    TMode mode() const override;
    void setDeviceList(const QStringList& addresses) override;
    QStringList deviceList() const override;
    void assign(TEvent event, int handler) override;

    std::vector<TRecord> records() const override;
    void edit(int index, TField field, const QString& value) override;
    void editStart(int index, qint64 startMs) override;

    void protocolIn(const QString& line) override;
    int findDevice(const QString& device) override;
    int findDeviceByRelay(const QString& device, const QString& relay) override;
    QString checkStatus(const QString& device, const QString& card, const QString& status) override;
    void callStackArray() override;
    int sqlCheck(int index, int mode) override;
    void sendComCommand(int index, int yesnot) override;
    void relay(const QString& device, const QString& relay, int yesnot) override;
    void checkStatusAll() override;
    bool checkTimeout(double first, double second, int limit) override;
    bool checkCrc(const QString& message) override;
    void setTimerInterval(int ms) override;
    void showStatus(TSender sender, const QStringList& values) override;
    void serverEcho(const QString& text) override;
    bool connected() override;

private:
    class TCore;
    struct TSplitter;
    struct TPort;

    void deliver(const std::shared_ptr<TPort>& port, const QByteArray& bytes);

    IHost& FHost;
    qint64 FNow;
    std::array<std::shared_ptr<TPort>, kPorts> FPorts;
    std::shared_ptr<TCore> FCore;
};

} // namespace tnv5::turnstile::model
