#pragma once

#include "model/scales_line_model.h"

#include <QStringList>

namespace tnv5::scales::model {

/// What a scales component does, told once more from the wire formats and without any code of its own.
class TScalesModel
{
public:
    /// @param design the component is being edited in the form designer
    TScalesModel(THostCall host, TClockModel& clock, bool design);
    /// Also from inside one of its own handlers: what is under way ends quietly.
    void destroy();
    bool alive() const { return FAlive; }

    // number of the handler that the host has assigned; 0: none
    int onLog = 0;
    int onError = 0;
    int onWeight = 0;

    int lang = 0;

    int lastWeight() const { return FLastWeight; }
    int scalesType() const { return FScalesType; }
    int sendInterval() const { return FSendInterval; }
    TPortModel* port() const { return FPort; }
    bool asks() const { return FAsk; }
    bool isConnected() const { return FPort != nullptr && FPort->connected; }
    void forgetPort() { FPort = nullptr; }

    // what the host calls
    void setLastWeight(int weight);
    void setScalesType(int type);
    void setComport(TPortModel* port);
    void setSendInterval(int ms);
    bool setConnection(bool open);
    void setUpComport();
    int getWeight(bool safe);
    void writeToPort(const QString& text);
    void reset();
    QString message(int index) const;

    static QStringList list();
    static QString digitsOnly(const QString& text);
    static QString replaceStr(const QString& text, const QString& old, const QString& with);
    static int lrc(const QString& text);
    static bool between(double now, double last, int limit);
    static QString byteToBin(int value);
    static int binToInt(const QString& bits);

private:
    template <class Body>
    void operation(Body&& body);
    template <class Body>
    void call(Body&& body);
    void fire(int handler, TEvent event, const QString& text);
    void log(const QString& text) { fire(onLog, TEvent::Log, text); }
    void error(const QString& text) { fire(onError, TEvent::Error, text); }

    bool connectPort(bool open);
    void begin(const QString& text);
    void send(const QString& text);
    void restart();
    void notify(int weight);
    void bind(TPortModel* port);
    void request(int type);
    int ask(bool safe);
    int wait(bool continuous);
    bool silent() const;

    void findStart(const QByteArray& buffer, qsizetype& position);
    void findStop(const QByteArray& buffer, qsizetype& position);
    void packet(const QByteArray& bytes);
    void massaK(const QByteArray& bytes);
    void cas(const QByteArray& bytes);
    void casWeight(const QByteArray& bytes);
    void store(const QString& field);
    void axis(const QString& text);
    void upaQ(const QString& text);
    void notifyChange(int weight);

    THostCall FHost;
    TClockModel& FClock;
    bool FDesign;
    bool FAlive = true;
    int FCount = 0;
    bool FAsk = false; // "ASK", else "HEY"
    qint64 FLastAsk;   // time of day in ms
    int FLastWeight = 0;
    int FScalesType = 0;
    int FSendInterval = -1;
    bool FBusy = false;
    TPortModel* FPort = nullptr;
    TClockModel::TTimer FTimer;
    TSplitterModel FSplitter;
};

} // namespace tnv5::scales::model
