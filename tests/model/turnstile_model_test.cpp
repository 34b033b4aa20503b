#include "model/turnstile_model.h"
#include "model/turnstile_player.h"
#include "support/text_printers.h"
#include "tnv5/platform/errors.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <cmath>
#include <gtest/gtest.h>

// Random scenarios, played against the component and against an independent model of it: everything that the
// host hears, every byte written and every result must be the same.

namespace tnv5::turnstile::model {

namespace {

using platform::TComponent;

/// Pictures are told apart by their width.
TDraw drawInto(QImage& img)
{
    return [&img](int width) { img = width > 0 ? QImage(width, 1, QImage::Format_Mono) : QImage(); };
}

/// The component with its remote mode in the test's hand.
class TProbe final : public TTurnStylerDevice
{
public:
    explicit TProbe(IHost& host) : FHost(host) {}
    void ServerEcho(const QString& AMess) override { FHost.echo(AMess); }
    bool Connected() override
    {
        return RemoutDevice() == podNone ? TTurnStylerDevice::Connected() : FHost.connected();
    }

protected:
    void ForwardLine(const QString& AMess) override { FHost.forward(AMess); }

private:
    IHost& FHost;
};

/// The component behind the scenarios' interface.
class TRealGate final : public IGate
{
public:
    TRealGate(IHost& host, qint64 startMs) : FHost(host), FClock(startMs)
    {
        FPrevious = platform::setExceptionHandler(
            [this](const QString& message, const std::exception_ptr&) { FHost.unhandled(message); });
        for (int port = 0; port < kPorts; ++port) {
            makePort(port);
        }
    }
    ~TRealGate() override { platform::setExceptionHandler(FPrevious); }

    void create(bool designing) override
    {
        std::optional<platform::TDesignScope> scope;
        if (designing) {
            scope.emplace();
        }
        FGate = std::make_unique<TProbe>(FHost);
    }
    void destroy() override { FGate.reset(); }
    bool alive() const override { return FGate != nullptr; }

    void feed(int port, const QByteArray& bytes) override { at(port).feed(bytes); }
    void setOpen(int port, bool open) override { at(port).SetConnected(open); }
    void setWriteFailure(int port, const QString& message) override
    {
        at(port).WriteFailure = message.isNull() ? std::nullopt : std::optional(message);
    }
    void renewPort(int port) override { makePort(port); }
    void assignPort(int port) override { FGate->SetComport(port == kNoPort ? nullptr : &at(port)); }
    int assignedPort() const override
    {
        for (int port = 0; port < kPorts; ++port) {
            if (FGate->ComPort() == FPorts[static_cast<std::size_t>(port)].get()) {
                return port;
            }
        }
        return kNoPort;
    }

    qint64 nowMs() const override { return FClock.nowMs(); }
    void advance(qint64 ms) override { FClock.advance(ms); }
    void jumpTo(qint64 ms) override { FClock.jumpTo(ms); }

    void setNumber(TNumber which, int value) override { FGate->setProperty(kNames[index(which)], value); }
    int number(TNumber which) const override { return FGate->property(kNames[index(which)]).toInt(); }
    void setText(TText which, const QString& value) override
    {
        which == TText::DoorIndex ? FGate->SetDoorIndex(value) : FGate->SetServer(value);
    }
    QString text(TText which) const override
    {
        return which == TText::DoorIndex ? FGate->DoorIndex() : FGate->Server();
    }
    void setMode(TMode mode) override { FGate->SetRemoutDevice(static_cast<TConState>(mode)); }
    TMode mode() const override { return static_cast<TMode>(FGate->RemoutDevice()); }
    void setDeviceList(const QStringList& addresses) override { FGate->SetDeviceList(addresses); }
    QStringList deviceList() const override { return FGate->DeviceList(); }
    void assign(TEvent event, int handler) override;

    std::vector<TRecord> records() const override;
    void edit(int index, TField field, const QString& value) override;
    void editStart(int index, qint64 startMs) override
    {
        FGate->StackItem(index)->Starttime = static_cast<double>(startMs) / platform::kMsPerDay;
    }

    void protocolIn(const QString& line) override { FGate->p_hw_ProtocolIn(line); }
    int findDevice(const QString& device) override { return FGate->p_hw_FindDevice(device); }
    int findDeviceByRelay(const QString& device, const QString& relay) override
    {
        return FGate->p_hw_FindDeviceByRelay(device, relay);
    }
    QString checkStatus(const QString& device, const QString& card, const QString& status) override
    {
        return FGate->p_hw_CheckStatus(device, card, status);
    }
    void callStackArray() override { FGate->p_hw_CallStackArray(); }
    int sqlCheck(int index, int mode) override { return FGate->p_hw_SQLCheck(index, mode); }
    void sendComCommand(int index, int yesnot) override { FGate->p_hw_SendComCommand(index, yesnot); }
    void relay(const QString& device, const QString& relay, int yesnot) override
    {
        FGate->p_hw_relay(device, relay, yesnot);
    }
    void checkStatusAll() override { FGate->p_hw_CheckStatusAll(); }
    bool checkTimeout(double first, double second, int limit) override
    {
        return FGate->p_hw_checktimeout(first, second, limit);
    }
    bool checkCrc(const QString& message) override { return FGate->CheckCRC(message); }
    void setTimerInterval(int ms) override { FGate->SetTimerInterval(ms); }
    void showStatus(TSender sender, const QStringList& values) override
    {
        TComponent* const senders[] = {FGate.get(), nullptr, &FOther};
        FGate->ShowinternalStatus(senders[static_cast<int>(sender)], values[0], values[1], values[2],
                                  values[3], values[4]);
    }
    void serverEcho(const QString& text) override { FGate->ServerEcho(text); }
    bool connected() override { return FGate->Connected(); }

private:
    static constexpr const char* kNames[] = {"RelayOpen",     "RelayClose", "RelayOpenDoor", "RelayCloseDoor",
                                             "TimeDelayOpen", "TimeOut",    "Port"};
    static std::size_t index(TNumber which) { return static_cast<std::size_t>(which); }

    testkit::TMemoryPort& at(int port) { return *FPorts[static_cast<std::size_t>(port)]; }
    void makePort(int port);
    TSender senderOf(const TComponent* sender) const
    {
        return sender == FGate.get() ? TSender::Self : sender == nullptr ? TSender::None : TSender::Other;
    }

    IHost& FHost;
    testkit::TManualClock FClock;
    std::array<std::unique_ptr<testkit::TMemoryPort>, kPorts> FPorts;
    TComponent FOther;
    std::unique_ptr<TProbe> FGate;
    platform::TExceptionHandler FPrevious;
};

void TRealGate::makePort(int port)
{
    auto& place = FPorts[static_cast<std::size_t>(port)];
    place = std::make_unique<testkit::TMemoryPort>();
    place->KeepWrites = false;
    place->OnWriting = [this, port] { FHost.writing(port); };
    place->OnWritten = [this, port](const QByteArray& bytes) { FHost.written(port, bytes); };
}

void TRealGate::assign(TEvent event, int handler)
{
    const auto logTo = [&](void (IHost::*method)(int, const QString&)) -> TLogEvent {
        if (handler == 0) {
            return nullptr;
        }
        return [this, handler, method](TComponent* sender, const QString& text) {
            EXPECT_EQ(sender, FGate.get());
            (FHost.*method)(handler, text);
        };
    };
    switch (event) {
    case TEvent::Log:
        FGate->SetOnLog(logTo(&IHost::log));
        break;
    case TEvent::Error:
        FGate->SetOnError(logTo(&IHost::error));
        break;
    case TEvent::Status:
        FGate->SetOnCheckStatus(handler == 0
                                    ? TCheckStatusDevice()
                                    : [this, handler](TComponent* sender, const QVariant& name,
                                                      const QVariant& device, const QVariant& card,
                                                      const QVariant& first, const QVariant& second) {
                                          FHost.status(handler, senderOf(sender),
                                                       {name.toString(), device.toString(), card.toString(),
                                                        first.toString(), second.toString()});
                                      });
        break;
    case TEvent::Sql:
        FGate->SetOnCheckSQL(
            handler == 0 ? TCheckSQLDevice()
                         : [this, handler](TComponent* sender, const QVariant& device, const QVariant& card,
                                           const QVariant& status, QImage& img, const QVariant& mode,
                                           QVariant& result) {
                               EXPECT_EQ(sender, FGate.get());
                               FHost.sql(handler, {device.toString(), card.toString(), status.toString()},
                                         img.width(), drawInto(img), mode.toInt(), result);
                           });
        break;
    case TEvent::Image:
        FGate->SetOnGetImg(handler == 0
                               ? TGetImg()
                               : [this, handler](TComponent* sender, const QString& device, QImage& img) {
                                     EXPECT_EQ(sender, FGate.get());
                                     FHost.image(handler, device, img.width(), drawInto(img));
                                 });
        break;
    }
}

std::vector<TRecord> TRealGate::records() const
{
    std::vector<TRecord> all;
    for (int item = 0; item < FGate->StackItemsCount(); ++item) {
        const PRFidInfo record = FGate->StackItem(item);
        all.push_back({record->CardNumber, record->Device, record->Status, record->StatusHard,
                       std::llround(record->Starttime * platform::kMsPerDay), record->Img.width(),
                       record->sys});
    }
    return all;
}

void TRealGate::edit(int item, TField field, const QString& value)
{
    const PRFidInfo record = FGate->StackItem(item);
    QString* const fields[] = {&record->CardNumber, &record->Device, &record->Status, &record->StatusHard};
    *fields[static_cast<int>(field)] = value;
}

/// The last lines of a long list, as one text.
QString tail(const QStringList& lines)
{
    constexpr qsizetype kShown = 60;
    return lines.mid(std::max<qsizetype>(0, lines.size() - kShown)).join(u'\n');
}

/// Plays one scenario against both; false when they differ.
bool play(quint64 seed)
{
    TPlayer expected(seed);
    TPlayer actual(seed);
    const qint64 start = expected.startMs();
    actual.startMs();
    TModelGate model(expected, start);
    TRealGate real(actual, start);

    expected.begin(model);
    actual.begin(real);
    QStringList history;
    const int steps = 20 + static_cast<int>(seed * 2'654'435'761U % 181U);
    for (int step = 0;; ++step) {
        const QStringList want = expected.takeTrace();
        const QStringList got = actual.takeTrace();
        if (want != got) {
            ADD_FAILURE() << "seed " << seed << " step " << step << "\n--- before\n"
                          << tail(history).toStdString() << "\n--- expected\n"
                          << want.join(u'\n').toStdString() << "\n--- actual\n"
                          << got.join(u'\n').toStdString();
            return false;
        }
        if (step == steps) {
            return true;
        }
        history += want;
        expected.step();
        actual.step();
    }
}

} // namespace

TEST(TurnstileModel, PlaysLikeTheComponent)
{
    constexpr int kScenarios = 400;
    bool given = false;
    const int wanted = qEnvironmentVariableIntValue("TNV5_SCENARIOS", &given);
    const int scenarios = given ? wanted : kScenarios;
    const auto first = static_cast<quint64>(qEnvironmentVariableIntValue("TNV5_SEED"));
    for (quint64 seed = first; seed < first + static_cast<quint64>(scenarios); ++seed) {
        if (!play(seed)) {
            break;
        }
    }
    for (const TBranch* branch : branches()) {
        if (given) {
            printf("%12lld %s\n", static_cast<long long>(branch->count), branch->name);
        }
        if (first == 0 && scenarios >= kScenarios) {
            EXPECT_GT(branch->count, 0) << branch->name;
        }
    }
}

} // namespace tnv5::turnstile::model
