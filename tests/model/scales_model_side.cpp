#include "model/scales_side.h"

#include <array>
#include <vector>

namespace tnv5::scales::model {

namespace {

class TModelSide final : public TSide
{
public:
    TModelSide()
    {
        for (auto& port : FPorts) {
            port = std::make_unique<TPortModel>(FForward);
        }
    }
    ~TModelSide() override
    {
        if (exists()) {
            FScales->destroy();
        }
    }

    void create(bool design) override
    {
        FGone.clear();
        FScales = std::make_unique<TScalesModel>(FForward, FClock, design);
    }
    void destroy() override
    {
        FScales->destroy();
        FGone.push_back(std::move(FScales)); // calls of it may be under way
    }
    bool exists() const override { return FScales != nullptr; }

    void startAt(qint64 ms) override { FClock.now = ms; }
    qint64 now() const override { return FClock.now; }
    void advance(qint64 ms) override { FClock.advance(ms); }
    void jump(qint64 ms) override { FClock.jump(ms); }

    void feed(int port, const QByteArray& bytes) override { at(port).feed(bytes); }
    void openByHost(int port) override { at(port).open(); }
    void closeByHost(int port) override { at(port).close(); }
    void setFault(int port, TFault fault, const std::optional<QString>& text) override
    {
        (fault == TFault::Open    ? at(port).openFailure
         : fault == TFault::Close ? at(port).closeFailure
                                  : at(port).writeFailure) = text;
    }
    void setName(int port, const QString& name) override { at(port).name = name; }
    void setSettings(int port, const TPortState& state) override
    {
        at(port).baudRate = state.baudRate;
        at(port).dataBits = state.dataBits;
        at(port).parity = state.parity;
        at(port).stopBits = state.stopBits;
        at(port).readGap = state.readGap;
    }
    TPortState portState(int port) const override
    {
        const TPortModel& p = *FPorts.at(size_t(port));
        return {p.baudRate, p.dataBits, p.parity, p.stopBits, p.readGap, p.connected};
    }
    void renewPort(int port) override
    {
        if (exists() && FScales->port() == &at(port)) {
            FScales->forgetPort();
        }
        FPorts.at(size_t(port)) = std::make_unique<TPortModel>(FForward);
    }

    void assignHandler(TEvent event, int handler) override
    {
        (event == TEvent::Log     ? FScales->onLog
         : event == TEvent::Error ? FScales->onError
                                  : FScales->onWeight) = handler;
    }
    void setComport(int port) override { FScales->setComport(port < 0 ? nullptr : &at(port)); }
    int comport() const override
    {
        for (int port = 0; port < kPorts; ++port) {
            if (FScales->port() == FPorts.at(size_t(port)).get()) {
                return port;
            }
        }
        return -1;
    }
    void setScalesType(int type) override { FScales->setScalesType(type); }
    int scalesType() const override { return FScales->scalesType(); }
    void setSendInterval(int ms) override { FScales->setSendInterval(ms); }
    int sendInterval() const override { return FScales->sendInterval(); }
    void setLang(int lang) override { FScales->lang = lang; }
    int lang() const override { return FScales->lang; }
    void setLastWeight(int weight) override { FScales->setLastWeight(weight); }
    int lastWeight() const override { return FScales->lastWeight(); }
    bool isConnected() const override { return FScales->isConnected(); }
    bool setConnection(bool open) override { return FScales->setConnection(open); }
    void setUpComport() override { FScales->setUpComport(); }
    int getWeight(bool safe) override { return FScales->getWeight(safe); }
    void writeToPort(const QString& text) override { FScales->writeToPort(text); }
    void reset() override { FScales->reset(); }
    QString message(int index) const override { return FScales->message(index); }
    QStringList list() const override { return TScalesModel::list(); }

    QString digitsOnly(const QString& text) const override { return TScalesModel::digitsOnly(text); }
    QString replaceStr(const QString& text, const QString& old, const QString& with) const override
    {
        return TScalesModel::replaceStr(text, old, with);
    }
    int lrc(const QString& text) const override { return TScalesModel::lrc(text); }
    bool between(double now, double last, int limit) const override
    {
        return TScalesModel::between(now, last, limit);
    }
    QString byteToBin(int value) const override { return TScalesModel::byteToBin(value); }
    int binToInt(const QString& bits) const override { return TScalesModel::binToInt(bits); }
    int binToByte(const QString& bits) const override { return TScalesModel::binToInt(bits) & 255; }

    [[noreturn]] void raise(const QString& text, bool silent) const override
    {
        throw TFailure{silent ? QStringLiteral("Operation aborted") : text, silent};
    }
    QString caught() const override
    {
        try {
            throw;
        } catch (const TFailure& failure) {
            return failure.text;
        }
    }

private:
    TPortModel& at(int port) { return *FPorts.at(size_t(port)); }

    const THostCall FForward = [this](TEvent event, const QString& text) { host(event, text); };
    TClockModel FClock;
    std::array<std::unique_ptr<TPortModel>, kPorts> FPorts;
    std::vector<std::unique_ptr<TScalesModel>> FGone;
    std::unique_ptr<TScalesModel> FScales;
};

} // namespace

std::unique_ptr<TSide> modelSide()
{
    return std::make_unique<TModelSide>();
}

} // namespace tnv5::scales::model
