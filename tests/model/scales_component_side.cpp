#include "model/scales_side.h"

#include "tnv5/common/bit_text.h"
#include "tnv5/scales/scales_device.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"

#include <array>

namespace tnv5::scales::model {

namespace {

using platform::TComponent;

class TComponentSide final : public TSide
{
public:
    TComponentSide()
    {
        FPrevious = platform::setExceptionHandler(
            [this](const QString& text, const std::exception_ptr&) { host(TEvent::Unhandled, text); });
        FClock.OnWait = [this] { host(TEvent::Wait, {}); };
        for (int port = 0; port < kPorts; ++port) {
            renewPort(port);
        }
    }
    ~TComponentSide() override { platform::setExceptionHandler(FPrevious); }

    void create(bool design) override
    {
        const auto scope = design ? std::make_unique<platform::TDesignScope>() : nullptr;
        FScales = std::make_unique<TScalesDevice>();
    }
    void destroy() override { FScales.reset(); }
    bool exists() const override { return FScales != nullptr; }

    void startAt(qint64 ms) override { FClock.jumpTo(ms); }
    qint64 now() const override { return FClock.nowMs(); }
    void advance(qint64 ms) override { FClock.advance(ms); }
    void jump(qint64 ms) override { FClock.jumpTo(ms); }

    void feed(int port, const QByteArray& bytes) override { at(port).feed(bytes); }
    void openByHost(int port) override { at(port).Open(); }
    void closeByHost(int port) override { at(port).Close(); }
    void setFault(int port, TFault fault, const std::optional<QString>& text) override
    {
        (fault == TFault::Open    ? at(port).OpenFailure
         : fault == TFault::Close ? at(port).CloseFailure
                                  : at(port).WriteFailure) = text;
    }
    void setName(int port, const QString& name) override { at(port).SetPort(name); }
    void setSettings(int port, const TPortState& state) override
    {
        at(port).SetBaudRate(state.baudRate);
        at(port).SetDataBits(state.dataBits);
        at(port).SetParity(platform::TParity(state.parity));
        at(port).SetStopBits(platform::TStopBits(state.stopBits));
        at(port).SetReadGap(state.readGap);
    }
    TPortState portState(int port) const override
    {
        const auto& p = *FPorts.at(size_t(port));
        return {p.BaudRate(), p.DataBits(), int(p.Parity()), int(p.StopBits()), p.ReadGap(), p.Connected()};
    }
    void renewPort(int port) override
    {
        auto& slot = FPorts.at(size_t(port));
        slot = std::make_unique<testkit::TMemoryPort>();
        auto* const fresh = slot.get();
        fresh->KeepWrites = false;
        fresh->OnOpening = [this, fresh] { host(TEvent::Opening, fresh->Port()); };
        fresh->OnClosing = [this, fresh] { host(TEvent::Closing, fresh->Port()); };
        fresh->OnWriting = [this] { host(TEvent::Writing, {}); };
        fresh->OnWritten = [this](const QByteArray& bytes) {
            host(TEvent::Written, QString::fromLatin1(bytes));
        };
    }

    void assignHandler(TEvent event, int handler) override;
    void setComport(int port) override { FScales->SetComport(port < 0 ? nullptr : &at(port)); }
    int comport() const override
    {
        for (int port = 0; port < kPorts; ++port) {
            if (FScales->ComPort() == FPorts.at(size_t(port)).get()) {
                return port;
            }
        }
        return -1;
    }
    void setScalesType(int type) override { FScales->SetScalesType(type); }
    int scalesType() const override { return FScales->ScalesType(); }
    void setSendInterval(int ms) override { FScales->SetSendInterval(ms); }
    int sendInterval() const override { return FScales->SendInterval(); }
    void setLang(int lang) override { FScales->SetIDLang(lang); }
    int lang() const override { return FScales->IDLang(); }
    void setLastWeight(int weight) override { FScales->SetLastWeight(weight); }
    int lastWeight() const override { return FScales->LastWeight(); }
    bool isConnected() const override { return FScales->IsConnected(); }
    bool setConnection(bool open) override { return FScales->SetConnection(open); }
    void setUpComport() override { FScales->SetUpComport(); }
    int getWeight(bool safe) override { return FScales->GetWeight(safe); }
    void writeToPort(const QString& text) override { FScales->WriteToPort(text); }
    void reset() override { FScales->Reset(); }
    QString message(int index) const override { return FScales->GetMessage(index); }
    QStringList list() const override
    {
        QStringList names{QStringLiteral("to be replaced")};
        FScales->GetScalesList(names);
        return names;
    }

    QString digitsOnly(const QString& text) const override { return TScalesDevice::DigitsOnly(text); }
    QString replaceStr(const QString& text, const QString& old, const QString& with) const override
    {
        return TScalesDevice::ReplaceStr(text, old, with);
    }
    int lrc(const QString& text) const override { return TScalesDevice::StringLRC(text); }
    bool between(double now, double last, int limit) const override
    {
        return TScalesDevice::p_hw_checktimebetween(now, last, limit);
    }
    QString byteToBin(int value) const override { return common::ByteToBinStr(uchar(value)); }
    int binToInt(const QString& bits) const override { return common::BitToint(bits); }
    int binToByte(const QString& bits) const override { return common::BinStrToByte(bits); }

    [[noreturn]] void raise(const QString& text, bool silent) const override
    {
        if (silent) {
            throw platform::EAbort();
        }
        throw platform::Exception(text);
    }
    QString caught() const override { return platform::exceptionMessage(); }

private:
    testkit::TMemoryPort& at(int port) { return *FPorts.at(size_t(port)); }
    /// Tells which handler was called; the sender must be the component.
    void tell(TComponent* sender, TEvent event, int handler, const QString& text)
    {
        host(event, numbered(handler, sender == FScales.get() ? text : QStringLiteral("from a stranger")));
    }

    testkit::TManualClock FClock;
    platform::TExceptionHandler FPrevious;
    std::array<std::unique_ptr<testkit::TMemoryPort>, kPorts> FPorts;
    std::unique_ptr<TScalesDevice> FScales;
};

void TComponentSide::assignHandler(TEvent event, int handler)
{
    if (event == TEvent::Weight) {
        TWeightEvent call;
        if (handler != 0) {
            call = [this, handler](TComponent* sender, int weight) {
                tell(sender, TEvent::Weight, handler, QString::number(weight));
            };
        }
        FScales->SetOnWeight(call);
        return;
    }
    platform::TLogEvent call;
    if (handler != 0) {
        call = [this, event, handler](TComponent* sender, const QString& text) {
            tell(sender, event, handler, text);
        };
    }
    event == TEvent::Log ? FScales->SetOnLog(call) : FScales->SetOnError(call);
}

} // namespace

std::unique_ptr<TSide> componentSide()
{
    return std::make_unique<TComponentSide>();
}

} // namespace tnv5::scales::model
