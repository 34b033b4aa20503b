#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <functional>
#include <vector>

/// What a scenario can do to a line of gates and what it hears from it. The component and the model stand
/// behind the same two interfaces, so that one scenario plays against both.
namespace tnv5::turnstile::model {

enum class TEvent { Log, Error, Status, Sql, Image };
inline constexpr int kEvents = 5;

enum class TNumber { RelayOpen, RelayClose, RelayOpenDoor, RelayCloseDoor, TimeDelayOpen, TimeOut, Port };
inline constexpr int kNumbers = 7;

enum class TText { DoorIndex, Server };

/// Fields of a record that a host may change.
enum class TField { Card, Device, Status, StatusHard };

/// Who a report says it comes from.
enum class TSender { Self, None, Other };

enum class TMode { Alone, Server, Client };

inline constexpr int kPorts = 2;
inline constexpr int kNoPort = -1;

/// One record of the table; a picture is told apart by its width.
struct TRecord
{
    QString card;
    QString device;
    QString status;
    QString statusHard;
    qint64 startMs = 0; // since midnight
    int image = 0;
    int sys = 0;
};

/// Replaces the picture that a handler was given.
using TDraw = std::function<void(int width)>;

/// The host: what the handlers, the remote mode and the port hear. `handler` tells which of the handlers that
/// were assigned in turn is called. Any of them may call back into the gate, and most may raise.
class IHost
{
public:
    virtual ~IHost() = default;

    virtual void log(int handler, const QString& text) = 0;
    virtual void error(int handler, const QString& text) = 0;
    virtual void status(int handler, TSender sender, const QStringList& values) = 0;
    virtual void sql(int handler, const QStringList& pass, int picture, const TDraw& draw, int mode,
                     QVariant& result) = 0;
    virtual void image(int handler, const QString& device, int picture, const TDraw& draw) = 0;

    virtual void echo(const QString& text) = 0;
    virtual bool connected() = 0;
    virtual void forward(const QString& line) = 0;

    virtual void writing(int port) = 0; ///< before a write
    virtual void written(int port, const QByteArray& bytes) = 0;
    virtual void unhandled(const QString& message) = 0; ///< an exception reached the event loop
};

/// The gate with its ports and its clock.
class IGate
{
public:
    virtual ~IGate() = default;

    virtual void create(bool designing) = 0;
    virtual void destroy() = 0;
    virtual bool alive() const = 0;

    virtual void feed(int port, const QByteArray& bytes) = 0;
    virtual void setOpen(int port, bool open) = 0;
    virtual void setWriteFailure(int port, const QString& message) = 0; ///< a null text: writes succeed
    virtual void renewPort(int port) = 0; ///< destroys it; the new one is closed
    virtual void assignPort(int port) = 0;
    virtual int assignedPort() const = 0;

    virtual qint64 nowMs() const = 0;
    virtual void advance(qint64 ms) = 0;
    virtual void jumpTo(qint64 ms) = 0;

    virtual void setNumber(TNumber which, int value) = 0;
    virtual int number(TNumber which) const = 0;
    virtual void setText(TText which, const QString& value) = 0;
    virtual QString text(TText which) const = 0;
    virtual void setMode(TMode mode) = 0;
    virtual TMode mode() const = 0;
    virtual void setDeviceList(const QStringList& addresses) = 0;
    virtual QStringList deviceList() const = 0;
    virtual void assign(TEvent event, int handler) = 0; ///< 0: none

    virtual std::vector<TRecord> records() const = 0;
    virtual void edit(int index, TField field, const QString& value) = 0;
    virtual void editStart(int index, qint64 startMs) = 0;

    virtual void protocolIn(const QString& line) = 0;
    virtual int findDevice(const QString& device) = 0;
    virtual int findDeviceByRelay(const QString& device, const QString& relay) = 0;
    virtual QString checkStatus(const QString& device, const QString& card, const QString& status) = 0;
    virtual void callStackArray() = 0;
    virtual int sqlCheck(int index, int mode) = 0;
    virtual void sendComCommand(int index, int yesnot) = 0;
    virtual void relay(const QString& device, const QString& relay, int yesnot) = 0;
    virtual void checkStatusAll() = 0;
    virtual bool checkTimeout(double first, double second, int limit) = 0;
    virtual bool checkCrc(const QString& message) = 0;
    virtual void setTimerInterval(int ms) = 0;
    virtual void showStatus(TSender sender, const QStringList& values) = 0;
    virtual void serverEcho(const QString& text) = 0;
    virtual bool connected() = 0;
};

} // namespace tnv5::turnstile::model
