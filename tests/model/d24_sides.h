#pragma once

#include "d24_host.h"
#include "d24_model.h"
#include "tnv5/d24/d24_device.h"
#include "tnv5/testing/manual_clock.h"

namespace tnv5::d24::model {

/// The component, in the hand of a scenario.
class TComponentSide : public TSide
{
public:
    explicit TComponentSide(const TTemper& temper) : FClock(temper.startMs)
    {
        std::optional<platform::TDesignScope> design;
        if (temper.designing) {
            design.emplace();
        }
        FGate = std::make_unique<TGate>(host());
    }
    ~TComponentSide() override
    {
        FGate.reset();
        dropLinks();
    }

    bool alive() const override { return FGate != nullptr; }
    QString state() const override;

protected:
    QString callGate(const TCall& call) override;

private:
    struct TGate : TTurnStylerDeviceD24
    {
        explicit TGate(THost& theHost) : host(theHost) {}
        void SendToMonitor(const QByteArray& AMess) override
        {
            CallOut([&] { host.monitor(AMess); });
        }
        THost& host;
    };

    void assign(int event, int handler);
    void setRecord(const TCall& call);
    void checkSender(const TComponent* Sender);

    testkit::TManualClock FClock;
    std::unique_ptr<TGate> FGate;
};

/// The model, in the same hand.
class TModelSide : public TSide
{
public:
    explicit TModelSide(const TTemper& temper)
        : FGate(std::make_unique<TModelGate>(host(), temper.startMs, temper.designing))
    {
    }
    ~TModelSide() override { dropLinks(); }

    bool alive() const override { return FGate->alive(); }
    QString state() const override;

protected:
    QString callGate(const TCall& call) override;

private:
    QString lookUp(const TCall& call);
    void set(const TCall& call);
    void setRecord(const TCall& call);

    std::unique_ptr<TModelGate> FGate;
};

} // namespace tnv5::d24::model
