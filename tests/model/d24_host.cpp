#include "d24_host.h"

#include "tnv5/platform/errors.h"

#include <QRegularExpression>
#include <stdexcept>

namespace tnv5::d24::model {

namespace {

constexpr int kDepth = 3;
constexpr int kCallsBack = 6;

QString shown(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.toPercentEncoding(" !\"#$&'()*+,/:;<=>?@[]^`{|}"));
}

} // namespace

// ---- the links and the port around a gate

class TSide::TScriptedLink : public connector::TDeviceConnector
{
public:
    TScriptedLink(THost& host, int index) : FHost(host), FIndex(index) {}

    bool GetConnected() override { return FHost.linkUp(FIndex); }
    QString SendCommand(const QString& AMess) override { return FHost.linkSend(FIndex, AMess); }

private:
    THost& FHost;
    int FIndex;
};

TSide::TSide() : FHost(std::make_unique<THost>(*this)), FPort(std::make_unique<testkit::TMemoryPort>())
{
    for (int i = 0; i < kScripted; ++i) {
        FScripted[std::size_t(i)] = std::make_unique<TScriptedLink>(*FHost, i);
    }
    makeReal();
}

TSide::~TSide() = default;

void TSide::makeReal()
{
    FReal = std::make_unique<connector::TDeviceConnector>();
    FReal->SetConnectorType(connector::podComPort);
    FReal->SetComport(FPort.get());
    FReal->SetOnLog([this](auto*, const QString& text) { FHost->text("link log", 1, text); });
    FReal->SetOnError([this](auto*, const QString& text) { FHost->text("link error", 1, text); });
    FPort->OnWritten = [this](const QByteArray& bytes) { FHost->note("written " + shown(bytes)); };
    FPort->KeepWrites = false;
}

void TSide::dropLinks()
{
    FReal.reset();
    FScripted = {};
}

connector::TDeviceConnector* TSide::link(qint64 index) const
{
    if (index < 0) {
        return nullptr;
    }
    return index < kScripted ? FScripted[std::size_t(index)].get() : FReal.get();
}

QString TSide::call(const TCall& call)
{
    if (callSurroundings(call)) {
        return {};
    }
    return alive() ? callGate(call) : QStringLiteral("gone");
}

bool TSide::callSurroundings(const TCall& call)
{
    switch (call.op) {
    case TOp::LinkLine:
        link(call.a)->GetCommand(call.text[0]);
        return true;
    case TOp::Feed:
        if (call.a > 0) {
            FPort->feedInPieces(call.text[0].toLatin1(), call.a);
        } else {
            FPort->feed(call.text[0].toLatin1());
        }
        return true;
    case TOp::LinkUp:
        FHost->up[std::size_t(call.a)] = call.b != 0;
        return true;
    case TOp::PortFails:
        portFails(call);
        return true;
    case TOp::PortOpen:
        openPort(call.a != 0);
        return true;
    case TOp::LinkType:
        FReal->SetConnectorType(connector::TConnectorType(call.a));
        return true;
    case TOp::Steal:
        link(call.a)->SetOnGetData([this](auto*, const QString& text) { FHost->note("stolen " + text); });
        return true;
    case TOp::NewLink:
        FScripted[std::size_t(call.a)] = nullptr;
        FScripted[std::size_t(call.a)] = std::make_unique<TScriptedLink>(*FHost, int(call.a));
        return true;
    default:
        return false;
    }
}

void TSide::portFails(const TCall& call)
{
    const std::optional<QString> failure =
        call.b != 0 ? std::optional(QStringLiteral("port fails")) : std::nullopt;
    (call.a == 0 ? FPort->OpenFailure : FPort->WriteFailure) = failure;
    FPort->OnWriting = nullptr;
    if (call.a == 2 && call.b != 0) {
        FPort->OnWriting = [this] {
            FPort->raiseErrorInside(platform::TComExceptionKind::Write, "port error", 5, "system text");
        };
    }
}

void TSide::openPort(bool open)
{
    if (open) {
        FPort->OpenFailure.reset();
        FPort->Open();
    } else {
        FPort->Close();
    }
}

// ---- the host

void THost::begin(quint64 seed, const TTemper& temper)
{
    FRandom.seed(seed);
    FTemper = temper;
    FBudget = kCallsBack;
    FRaised = 0;
}

void THost::note(const QString& line)
{
    static const QRegularExpression noInteger(
        QStringLiteral("(Could not convert|Overflow while converting) variant of type.*type \\(Integer\\)"));
    FTrace << (line.contains(QLatin1String("variant")) ? QString(line).replace(noInteger, kNoInteger) : line);
}

void THost::text(const char* name, int handler, const QString& text)
{
    note(QStringLiteral("%1%2 %3").arg(QLatin1String(name)).arg(handler).arg(text));
    act();
}

void THost::status(int handler, const QStringList& fields)
{
    note(QStringLiteral("status%1 %2").arg(handler).arg(fields.join(u'!')));
    act();
    note(QStringLiteral("end of status ") + fields.join(u'!'));
}

void THost::picture(int handler, const QString& device, QImage& img)
{
    note(QStringLiteral("picture%1 %2 of %3").arg(handler).arg(device).arg(img.width()));
    act();
    if (roll(4) != 0) {
        img = QImage(1 + roll(5), 1, QImage::Format_Mono);
    }
}

void THost::question(int handler, const QStringList& fields, QImage& img, int mode, QVariant& mess,
                     QVariant& result)
{
    note(QStringLiteral("question%1 %2 picture %3 mode %4")
             .arg(handler)
             .arg(fields.join(u'!'))
             .arg(img.width())
             .arg(mode));
    if (!mess.toString().isEmpty() || result != QVariant(-1)) {
        note(QStringLiteral("preset: %1, %2").arg(mess.toString(), result.toString()));
    }
    if (roll(10) == 0) {
        img = QImage(6 + roll(5), 1, QImage::Format_Mono);
    }
    static const QVariant messages[] = {
        QString(), QString("|A|B|C|D|LS|"), QString("NO ENTRY"), QString("|Баланс 5 €||||"), QVariant(), 5};
    if (roll(2) == 0) {
        mess = messages[roll(6)];
    }
    static const QVariant oddOnes[] = {"abc", QVariant(), "1",  "0", "-1", 1.0,
                                       0.0,   2.0,        "22", "",  1.2,  qint64(1)};
    const int choice = roll(20);
    if (FTemper.odd && choice < 4) {
        result = oddOnes[roll(12)];
    } else if (choice < 14) {
        result = 1;
    } else if (choice < 16) {
        result = 0;
    } else if (choice < 18) {
        result = choice == 16 ? 2 : -1;
    }
    act();
    note(QStringLiteral("end of question ") + fields.join(u'!'));
}

void THost::monitor(const QByteArray& bytes)
{
    note("monitor " + shown(bytes));
    if (roll(4) == 0) {
        act();
    }
}

bool THost::linkUp(int link)
{
    note(QStringLiteral("link %1 up?").arg(link));
    const bool answer = up[std::size_t(link)];
    act();
    return answer;
}

QString THost::linkSend(int link, const QString& command)
{
    note(QStringLiteral("link %1 sends %2").arg(link).arg(command));
    if (roll(1000) < FTemper.linkFails) {
        raise();
    }
    static const QString checks[] = {"", "", "4F"};
    const QString check = checks[roll(3)];
    if (FTemper.nested > 0 && roll(5) == 0) {
        callBack(disturbingCall(FRandom, FTemper));
    } else {
        act();
    }
    return check;
}

void THost::act()
{
    const int choice = roll(1000);
    if (choice < FTemper.nested) {
        callBack(randomCall(FRandom, FTemper, true));
    } else if (choice < FTemper.nested + FTemper.raising) {
        raise();
    }
}

void THost::callBack(const TCall& call)
{
    if (FDepth >= kDepth || FBudget <= 0) {
        return;
    }
    --FBudget;
    const bool catches = roll(2) == 0;
    note(QStringLiteral("calls ") + describe(call));
    ++FDepth;
    try {
        const QString result = FSide.call(call);
        --FDepth;
        note(QStringLiteral("called => ") + result);
    } catch (const std::exception&) {
        --FDepth;
        if (!catches) {
            throw;
        }
        note(QStringLiteral("caught ") + platform::exceptionMessage());
    }
}

void THost::raise()
{
    const QString message = QStringLiteral("Сбой %1").arg(++FRaised);
    switch (roll(4)) {
    case 0:
        throw platform::EAbort();
    case 1:
        throw std::runtime_error(message.toStdString());
    default:
        throw platform::Exception(message);
    }
}

} // namespace tnv5::d24::model
