// A scenario's calls, put to the component and to the model.

#include "d24_sides.h"

#include <cmath>
#include <cstdlib>
#include <optional>

namespace tnv5::d24::model {

namespace {

constexpr double kMsPerDay = platform::kMsPerDay;

QString text(qint64 value)
{
    return QString::number(value);
}

QString passText(const QStringList& texts, const QImage& img, bool finish, qint64 start, qint64 sent)
{
    return QStringLiteral("  pass %1 picture %2 finish %3 start %4 sent %5")
        .arg(texts.join(u'!'))
        .arg(img.width())
        .arg(finish)
        .arg(start)
        .arg(sent);
}

QString controllerText(const QStringList& texts, qint64 heard)
{
    return QStringLiteral("  controller %1 heard %2").arg(texts.join(u'!')).arg(heard);
}

qint64 inMs(platform::TDateTime moment)
{
    return std::llround(moment * kMsPerDay);
}

QStringList words(std::initializer_list<QVariant> values)
{
    QStringList texts;
    for (const QVariant& value : values) {
        texts << (value.typeId() == QMetaType::QString ? value.toString() : QStringLiteral("no text"));
    }
    return texts;
}

} // namespace

void TComponentSide::checkSender(const TComponent* Sender)
{
    if (Sender != FGate.get()) {
        host().note("wrong sender");
    }
}

void TComponentSide::assign(int event, int handler)
{
    const bool on = handler != 0;
    const auto logs = [&](const char* name) -> TLogEvent {
        return [this, handler, name](TComponent* Sender, const QString& Str) {
            checkSender(Sender);
            host().text(name, handler, Str);
        };
    };
    switch (event) {
    case evLog:
        return FGate->SetOnLog(on ? logs("log") : TLogEvent());
    case evError:
        return FGate->SetOnError(on ? logs("error") : TLogEvent());
    case evImg:
        return FGate->SetOnGetImg(!on ? TGetImg() : [this, handler](auto* Sender, auto& Device, QImage& Img) {
            checkSender(Sender);
            host().picture(handler, Device, Img);
        });
    case evStatus:
        return FGate->SetOnCheckStatus(
            !on ? TCheckStatusDevice()
                : [this, handler](auto* Sender, auto& AName, auto& IP, auto& Device, auto& DeviceType,
                                  auto& Cardnumber, auto& Status1, auto& Status2) {
                      checkSender(Sender);
                      host().status(handler,
                                    words({AName, IP, Device, DeviceType, Cardnumber, Status1, Status2}));
                  });
    default:
        return FGate->SetOnCheckSQL(
            !on ? TCheckSQLDevice()
                : [this, handler](auto* Sender, auto& IP, auto& Device, auto& DeviceType, auto& Cardnumber,
                                  auto& Status, QImage& Img, auto& AIndex, QVariant& Mess,
                                  QVariant& AResult) {
                      checkSender(Sender);
                      host().question(handler, words({IP, Device, DeviceType, Cardnumber, Status}), Img,
                                      AIndex.typeId() == QMetaType::Int ? AIndex.toInt() : -100, Mess,
                                      AResult);
                  });
    }
}

void TComponentSide::setRecord(const TCall& call)
{
    const PRFidInfo pass = FGate->StackItem(int(call.a));
    if (!pass) {
        return;
    }
    QString* const texts[] = {&pass->Status,  &pass->DeviceType, &pass->CardNumber, &pass->CRC,
                              &pass->Command, nullptr,           nullptr,           &pass->InfoMess};
    if (QString* field = texts[call.b]) {
        *field = call.text[0];
    } else if (call.b == 5) {
        pass->Starttime = double(call.c) / kMsPerDay;
    } else {
        pass->Finish = call.c % 2 != 0;
    }
}

QString TComponentSide::callGate(const TCall& call)
{
    const QStringList& t = call.text;
    const int a = int(call.a);
    const int b = int(call.b);
    switch (call.op) {
    case TOp::Line:
        FGate->p_hw_ProtocolIn(t[0]);
        break;
    case TOp::ConnectorData:
        FGate->OnConnectorData(nullptr, t[0]);
        break;
    case TOp::Parse:
        return FGate->ParseMessage(t[0], t[1]);
    case TOp::CheckStatus:
        return FGate->p_hw_CheckStatus(t[0], t[1], t[2], t[3], t[4]);
    case TOp::FindDevice:
        return text(FGate->p_hw_FindDevice(t[0], t[1]));
    case TOp::FindIp:
        return text(FGate->p_hw_FindIP(t[0]));
    case TOp::FindByCard:
        return text(FGate->p_hw_FindDeviceByRelay(t[0], t[1], t[2], t[3]));
    case TOp::Ping:
        FGate->DevicePing(t[0], t[1], t[2]);
        break;
    case TOp::PingFind:
        return text(FGate->DevicePingFind(t[0], t[1]));
    case TOp::UpdatePing:
        FGate->UpdatePing(t[0], t[1]);
        break;
    case TOp::SilenceCheck:
        FGate->DevicePingTime(FGate.get());
        break;
    case TOp::Pass:
        FGate->p_hw_CallStackArray();
        break;
    case TOp::SqlCheck:
        return text(FGate->p_hw_SQLCheck(a, b));
    case TOp::Send:
        return text(FGate->p_hw_SendComCommand(a, b));
    case TOp::CheckTimeout:
        return text(
            FGate->p_hw_checktimeout(double(call.a) / kMsPerDay, double(call.b) / kMsPerDay, int(call.c)));
    case TOp::StatusAll:
        return text(FGate->p_hw_CheckStatusAll());
    case TOp::Relay:
        return text(FGate->p_hw_relay(t[0], t[1], t[2], a));
    case TOp::Manual:
        FGate->p_hw_manual(t[0], t[1], t[2]);
        break;
    case TOp::Interval:
        FGate->SetTimerInterval(a);
        break;
    case TOp::Show:
        FGate->ShowinternalStatus(FGate.get(), t[0], t[1], t[2], t[3], t[4], t[5], t[6]);
        break;
    case TOp::Connected:
        return FGate->RemoutDevice() == podNone ? text(FGate->Connected()) : QString();
    case TOp::SetConnector:
        FGate->SetConnector(link(call.a));
        break;
    case TOp::Assign:
        assign(a, b);
        break;
    case TOp::SetCheckCross:
        FGate->SetCheckCross(a != 0);
        break;
    case TOp::SetCheckET:
        FGate->SetCheckET(a != 0);
        break;
    case TOp::SetPingDelay:
        FGate->Setpingdelay(a);
        break;
    case TOp::SetTimeOut:
        FGate->SetTimeOut(a);
        break;
    case TOp::SetMode:
        FGate->SetRemoutDevice(TConState(a));
        break;
    case TOp::SetRecord:
        setRecord(call);
        break;
    case TOp::Advance:
        FClock.advance(call.a);
        break;
    case TOp::Jump:
        FClock.jumpTo(call.a != 0 ? call.a : FClock.nowMs() + call.b);
        break;
    case TOp::Destroy:
        FGate.reset();
        break;
    default:
        break;
    }
    return {};
}

QString TComponentSide::state() const
{
    QStringList lines;
    for (int i = 0; FGate && i < FGate->StackItemsCount(); ++i) {
        const TRFidInfo& pass = *FGate->StackItem(i);
        lines << passText({pass.IP, pass.DeviceType, pass.CardNumber, pass.Device, pass.Status,
                           pass.StatusHard, pass.InfoMess, pass.Command, pass.CommandAdd, pass.CRC,
                           text(pass.sys)},
                          pass.Img, pass.Finish, inMs(pass.Starttime), inMs(pass.CRCtime));
    }
    for (int i = 0; FGate && i < FGate->DeviceList().size(); ++i) {
        const TDevicelist& entry = *FGate->DeviceList().at(i);
        lines << controllerText({entry.IP, entry.Device, entry.DeviceType}, inMs(entry.Pingtime));
    }
    for (int i = 0; i <= kScripted; ++i) {
        lines << QStringLiteral("  link %1 %2 %3")
                     .arg(i)
                     .arg(bool(link(i)->OnGetData()))
                     .arg(FGate && FGate->Connector() == link(i));
    }
    return lines.join(u'\n');
}

QString TModelSide::callGate(const TCall& call)
{
    const QStringList& t = call.text;
    const int a = int(call.a);
    const int b = int(call.b);
    TModelGate& gate = *FGate;
    switch (call.op) {
    case TOp::Line:
    case TOp::ConnectorData:
        gate.line(t[0]);
        break;
    case TOp::Ping:
        gate.ping(t[0], t[1], t[2]);
        break;
    case TOp::UpdatePing:
        gate.updatePing(t[0], t[1]);
        break;
    case TOp::SilenceCheck:
        gate.silenceCheck();
        break;
    case TOp::Pass:
        gate.pass();
        break;
    case TOp::Send:
        gate.sendCommand(a, b);
        return text(1);
    case TOp::StatusAll:
    case TOp::Relay:
        gate.testPort();
        return text(1);
    case TOp::Manual:
        gate.manual(t[0], t[1], t[2]);
        break;
    case TOp::Interval:
        gate.setInterval(a);
        break;
    case TOp::Show:
        gate.show(t);
        break;
    case TOp::SetRecord:
        setRecord(call);
        break;
    case TOp::Advance:
        gate.advance(call.a);
        break;
    case TOp::Jump:
        gate.jump(call.a, call.b);
        break;
    case TOp::Destroy:
        gate.destroy();
        break;
    default:
        set(call);
        return lookUp(call);
    }
    return {};
}

QString TModelSide::lookUp(const TCall& call)
{
    const QStringList& t = call.text;
    switch (call.op) {
    case TOp::Parse:
        return FGate->field(t[0], t[1]);
    case TOp::CheckStatus:
        return FGate->checkStatus(t[0], t[1], t[2], t[3], t[4]);
    case TOp::FindDevice:
        return text(FGate->findDevice(t[1]));
    case TOp::FindIp:
        return text(FGate->findIp(t[0]));
    case TOp::FindByCard:
        return text(FGate->findByCard(t[0], t[1], t[2], t[3]));
    case TOp::PingFind:
        return text(FGate->findController(t[0], t[1]));
    case TOp::SqlCheck:
        return text(FGate->sqlCheck(int(call.a), int(call.b)));
    case TOp::CheckTimeout:
        return text(std::llabs(call.a - call.b) / 1000 > call.c);
    case TOp::Connected:
        return FGate->mode == podNone ? text(FGate->connected()) : QString();
    default:
        return {};
    }
}

void TModelSide::set(const TCall& call)
{
    switch (call.op) {
    case TOp::SetConnector:
        FGate->setConnector(link(call.a));
        break;
    case TOp::Assign:
        FGate->handlers[call.a] = int(call.b);
        break;
    case TOp::SetCheckCross:
        FGate->checkCross = call.a != 0;
        break;
    case TOp::SetCheckET:
        FGate->checkET = call.a != 0;
        break;
    case TOp::SetPingDelay:
        FGate->pingDelay = int(call.a);
        break;
    case TOp::SetTimeOut:
        FGate->timeOut = int(call.a);
        break;
    case TOp::SetMode:
        FGate->mode = TConState(call.a);
        break;
    default:
        break;
    }
}

void TModelSide::setRecord(const TCall& call)
{
    if (call.a >= qint64(FGate->passes.size())) {
        return;
    }
    TModelGate::TPass& pass = *FGate->passes[std::size_t(call.a)];
    QString* const texts[] = {&pass.status,  &pass.type, &pass.card, &pass.crc,
                              &pass.command, nullptr,    nullptr,    &pass.info};
    if (QString* field = texts[call.b]) {
        *field = call.text[0];
    } else if (call.b == 5) {
        pass.start = call.c;
    } else {
        pass.finish = call.c % 2 != 0;
    }
}

QString TModelSide::state() const
{
    QStringList lines;
    const bool there = FGate->alive();
    for (std::size_t i = 0; there && i < FGate->passes.size(); ++i) {
        const TModelGate::TPass& pass = *FGate->passes[i];
        lines << passText({pass.ip, pass.type, pass.card, pass.device, pass.status, "", pass.info,
                           pass.command, "", pass.crc, "0"},
                          pass.img, pass.finish, pass.start, pass.crcTime);
    }
    for (std::size_t i = 0; there && i < FGate->controllers.size(); ++i) {
        const TModelGate::TController& entry = *FGate->controllers[i];
        lines << controllerText({entry.ip, entry.device, entry.type}, entry.heard);
    }
    for (int i = 0; i <= kScripted; ++i) {
        lines << QStringLiteral("  link %1 %2 %3")
                     .arg(i)
                     .arg(bool(link(i)->OnGetData()))
                     .arg(there && FGate->link == link(i));
    }
    return lines.join(u'\n');
}

} // namespace tnv5::d24::model
