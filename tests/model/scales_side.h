#pragma once

#include "model/scales_model.h"

#include <memory>

namespace tnv5::scales::model {

constexpr int kPorts = 2;

/// Settings and state of a port that a scenario looks at.
struct TPortState
{
    int baudRate;
    int dataBits;
    int parity;
    int stopBits;
    int readGap;
    bool connected;
    bool operator==(const TPortState&) const = default;
};

enum class TFault { Open, Close, Write };

/// One component with its ports and its time, as a host has them in hand: either the real one or the model.
class TSide
{
public:
    virtual ~TSide() = default;

    /// Hears every event; may call back into the side, and may throw with `raise`.
    THostCall host;

    virtual void create(bool design) = 0;
    virtual void destroy() = 0;
    virtual bool exists() const = 0;

    // time
    virtual void startAt(qint64 ms) = 0;
    virtual qint64 now() const = 0;
    virtual void advance(qint64 ms) = 0;
    virtual void jump(qint64 ms) = 0;

    // ports
    virtual void feed(int port, const QByteArray& bytes) = 0;
    virtual void openByHost(int port) = 0;
    virtual void closeByHost(int port) = 0;
    virtual void setFault(int port, TFault fault, const std::optional<QString>& text) = 0;
    virtual void setName(int port, const QString& name) = 0;
    virtual void setSettings(int port, const TPortState& state) = 0;
    virtual TPortState portState(int port) const = 0;
    virtual void renewPort(int port) = 0;

    // the component
    virtual void assignHandler(TEvent event, int handler) = 0; // number of one; 0: none
    virtual void setComport(int port) = 0;                     // -1: none
    virtual int comport() const = 0;
    virtual void setScalesType(int type) = 0;
    virtual int scalesType() const = 0;
    virtual void setSendInterval(int ms) = 0;
    virtual int sendInterval() const = 0;
    virtual void setLang(int lang) = 0;
    virtual int lang() const = 0;
    virtual void setLastWeight(int weight) = 0;
    virtual int lastWeight() const = 0;
    virtual bool isConnected() const = 0;
    virtual bool setConnection(bool open) = 0;
    virtual void setUpComport() = 0;
    virtual int getWeight(bool safe) = 0;
    virtual void writeToPort(const QString& text) = 0;
    virtual void reset() = 0;
    virtual QString message(int index) const = 0;
    virtual QStringList list() const = 0;

    // helpers
    virtual QString digitsOnly(const QString& text) const = 0;
    virtual QString replaceStr(const QString& text, const QString& old, const QString& with) const = 0;
    virtual int lrc(const QString& text) const = 0;
    virtual bool between(double now, double last, int limit) const = 0;
    virtual QString byteToBin(int value) const = 0;
    virtual int binToInt(const QString& bits) const = 0;
    virtual int binToByte(const QString& bits) const = 0;

    /// Throws what this side's host code would.
    [[noreturn]] virtual void raise(const QString& text, bool silent) const = 0;
    /// Text of the exception being handled.
    virtual QString caught() const = 0;
};

std::unique_ptr<TSide> componentSide();
std::unique_ptr<TSide> modelSide();

} // namespace tnv5::scales::model
