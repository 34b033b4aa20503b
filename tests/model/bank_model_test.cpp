// Random scenarios, played to the component and to the model; every event and every byte is compared.
// TNV5_SCENARIOS=20000 plays more than usual.

#include "bank_model.h"

#include "tnv5/bank/serial_bank_pos.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"

#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <random>

namespace tnv5::bank::model {
namespace {

using platform::TComponent;

class TComponentSide final : public TSide
{
public:
    TComponentSide(THost& host, std::int64_t startMs) : FHost(host), FClock(startMs)
    {
        FPrevious = platform::setExceptionHandler([this](const QString& message, const std::exception_ptr&) {
            FHost.note(QStringLiteral("raised ") + message);
        });
        FPort.OnWritten = [this](const QByteArray& bytes) {
            FHost.note(QStringLiteral("write ") + QString::fromLatin1(bytes));
        };
        FPos->SetComport(&FPort);
        doAssign(true, true, true, true);
    }
    ~TComponentSide() override { platform::setExceptionHandler(FPrevious); }

    void feed(const QByteArray& bytes) override { FPort.feed(bytes); }
    void advance(std::int64_t ms) override { FClock.advance(ms); }
    void setType(int type) override { FPos->SetPosType(type); }
    void setTimeOut(int units) override { FPos->SetTimeOut(units); }
    void setLanguage(int language) override { FPos->SetIDLang(language); }
    void setCodes(const QString& ok, const QString& error) override
    {
        FPos->SetCodeOk(ok);
        FPos->SetCodeError(error);
    }
    void setConnection(bool open) override
    {
        platform::guarded([&] {
            const bool done = FPos->SetConnection(open);
            if (FPos) { // else the result says nothing
                FHost.note(done ? QStringLiteral("connection 1") : QStringLiteral("connection 0"));
            }
        });
    }
    void openPort(bool open) override { FPort.SetConnected(open); }
    void failWrites(bool fail) override
    {
        FPort.WriteFailure = fail ? std::optional(QStringLiteral("line gone")) : std::nullopt;
    }
    void link(bool link) override { FPos->SetComport(link ? &FPort : nullptr); }
    void assign(bool log, bool error, bool operation, bool amount) override
    {
        doAssign(log, error, operation, amount);
    }
    QString cut(const QString& packet, const QString& tag) override { return FPos->CutValue(packet, tag); }
    void destroy() override { FPos.reset(); }
    bool alive() const override { return FPos != nullptr; }

private:
    void doAssign(bool log, bool error, bool operation, bool amount)
    {
        const auto line = [this](const char* kind) -> TLogEvent {
            return [this, kind](TComponent*, const QString& text) {
                FHost.event(QString::fromLatin1(kind) + text);
            };
        };
        FPos->SetOnLog(log ? line("log ") : TLogEvent());
        FPos->SetOnError(error ? line("error ") : TLogEvent());
        FPos->SetOnRequestOperation({});
        if (operation) {
            FPos->SetOnRequestOperation(
                [this](TComponent*, const QString& CardNo, const QString& CardType, const QString& CardHolder,
                       const QString& Operation, const QString& Answer, const QString& BankType, bool& Apply,
                       const QString& Status, const QString& DiscountType, const QString& Discount) {
                    const QStringList values = {CardNo, CardType, CardHolder,   Operation,
                                                Answer, BankType, DiscountType, Discount};
                    FHost.operation(Status + u' ' + values.join(u'|'), Apply);
                });
        }
        FPos->SetOnRequestAmount({});
        if (amount) {
            FPos->SetOnRequestAmount([this](TComponent*, int& Amount, int& Discount, bool& Apply) {
                EXPECT_EQ(Amount, 0);
                EXPECT_EQ(Discount, 0);
                FHost.amount(QStringLiteral("amount"), Amount, Discount, Apply);
            });
        }
    }

    THost& FHost;
    testkit::TManualClock FClock;
    testkit::TMemoryPort FPort;
    std::unique_ptr<TBankPos> FPos = std::make_unique<TBankPos>();
    platform::TExceptionHandler FPrevious;
};

using TStep = std::function<void(TSide&, THost&)>;

class TScenario
{
public:
    explicit TScenario(unsigned seed) : FRandom(seed)
    {
        hostile = below(3) == 0;
        for (int i = 0; i < 40; ++i) {
            script.push_back(reaction());
        }
        startMs = testkit::TManualClock::at(below(24), below(60), below(60), below(1000));
        steps.push_back([](TSide& side, THost&) {
            side.setType(2);
            side.setLanguage(2);
            side.setCodes("00;10;", "05;51;00;");
            side.openPort(true);
        });
        const int count = 5 + below(30);
        for (int i = 0; i < count; ++i) {
            step();
        }
    }

    bool hostile = false;
    std::int64_t startMs = 0;
    std::vector<TReaction> script;
    std::vector<TStep> steps;

private:
    int below(int limit) { return int(FRandom() % unsigned(limit)); }
    template <class T>
    T pick(std::initializer_list<T> from)
    {
        return from.begin()[below(int(from.size()))];
    }

    TReaction reaction()
    {
        TReaction result;
        result.apply = pick({0, 1, 1, 1, 2});
        result.amount = pick({0, 5, 1250, -7, 2'147'483'647, below(1'000'000)});
        result.discount = pick({0, 0, -3, below(10'000)});
        if (hostile && below(6) == 0) {
            result.deed = static_cast<TDeed>(below(int(TDeed::Destroy) + (below(5) == 0 ? 1 : 0)));
        }
        return result;
    }

    QByteArray field(const char* tag)
    {
        const QByteArray value = pick<QByteArray>({"", "00", "05", "51", "1", "4111111111111111", "X",
                                                   QByteArray(below(1100), 'z'), "01=", "06=", "\x02", "\x05",
                                                   "\x04", "\xFF\x80", QByteArray(1, '\0')});
        return QByteArray(tag) + value;
    }

    QByteArray body()
    {
        switch (below(8)) {
        case 0:
        case 1:
            return "\x05";
        case 2:
            return "\x04";
        case 3: {
            QByteArrayList list = {field("01="), "02=A/B", "03=1", "04=V", "10=7"};
            return list.join('\x1C');
        }
        case 4:
        case 5: {
            QByteArrayList list = {"01=4111",
                                   "06=" + pick<QByteArray>({"00", "0", "10", "05", "51", "9", ""}), "40=3",
                                   "41=4", "42=5"};
            return list.join('\x1C');
        }
        default: {
            QByteArrayList list;
            for (int i = below(6); i >= 0; --i) {
                list << field(pick({"01=", "02=", "03=", "04=", "06=", "10=", "40=", "41=", "42=", "99="}));
            }
            return list.join('\x1C');
        }
        }
    }

    QByteArray frame()
    {
        if (below(8) == 0) { // soup
            QByteArray bytes;
            for (int i = below(12); i >= 0; --i) {
                bytes += pick({'\x02', '\x03', '\x04', '\x05', '\x06', '\x07', '\0', 'a', '!', '\x1C'});
            }
            return bytes;
        }
        const QByteArray inner = body() + '\x03';
        char check = 0;
        for (const char byte : inner) {
            check = char(check ^ byte);
        }
        if (below(12) == 0) {
            check = char(check ^ (1 << below(8)));
        }
        return '\x02' + inner + check;
    }

    void feed()
    {
        const QByteArray bytes = below(6) == 0 ? frame() + frame() : frame();
        const qsizetype piece = below(3) == 0 ? 1 + below(int(bytes.size())) : bytes.size();
        for (qsizetype at = 0; at < bytes.size(); at += piece) {
            const QByteArray part = bytes.mid(at, piece);
            steps.push_back([part](TSide& side, THost&) { side.feed(part); });
        }
    }

    void step()
    {
        switch (below(16)) {
        case 0: {
            const std::int64_t ms =
                pick({1, 400, 999, 1000, 1001, 2000, 900'000, 1'800'000, 1'801'000, 7'200'000, 90'000'000});
            steps.push_back([ms](TSide& side, THost&) { side.advance(ms); });
            break;
        }
        case 1:
            property();
            break;
        case 2: {
            const bool open = below(4) != 0;
            steps.push_back([open](TSide& side, THost&) { side.setConnection(open); });
            break;
        }
        case 3: {
            const QString packet = QString::fromLatin1(frame());
            const QString tag = pick<QString>({"01=", "06=", "41=", "=", "", packet.left(2)});
            steps.push_back(
                [packet, tag](TSide& side, THost& host) { host.note("cut " + side.cut(packet, tag)); });
            break;
        }
        default:
            feed();
            break;
        }
    }

    void property()
    {
        const int value = below(6);
        switch (below(5)) {
        case 0:
            steps.push_back([value](TSide& side, THost&) { side.setType(value - 1); });
            break;
        case 1: {
            const int units = pick({-1, 0, 1, 2, 47, 48, 2'000'000'000});
            steps.push_back([units](TSide& side, THost&) { side.setTimeOut(units); });
            break;
        }
        case 2:
            steps.push_back([value](TSide& side, THost&) { side.setLanguage(value - 1); });
            break;
        case 3:
            steps.push_back([value](TSide& side, THost&) {
                side.link(value != 0);
                side.openPort(value != 1);
            });
            break;
        default:
            steps.push_back([value](TSide& side, THost&) {
                side.assign(value != 0, value != 1, value != 2, value != 3);
                side.failWrites(value == 4);
            });
            break;
        }
    }

    std::mt19937 FRandom;
};

template <class Side>
QStringList play(const TScenario& scenario)
{
    TSide* target = nullptr;
    THost host(scenario.script, target);
    Side side(host, scenario.startMs);
    target = &side;
    for (std::size_t i = 0; i < scenario.steps.size() && side.alive(); ++i) {
        host.note(QStringLiteral("-- %1").arg(i));
        scenario.steps[i](side, host);
    }
    return host.trace;
}

TEST(BankModel, ComponentDoesWhatTheModelDoes)
{
    bool given = false;
    const int wanted = qEnvironmentVariableIntValue("TNV5_SCENARIOS", &given);
    const int scenarios = given ? wanted : 1'500;
    std::map<QString, int> seen;
    for (int seed = 1; seed <= scenarios; ++seed) {
        const TScenario scenario{unsigned(seed)};
        const QStringList component = play<TComponentSide>(scenario);
        const QStringList model = play<TModel>(scenario);
        for (const QString& line : component) {
            ++seen[line.section(u' ', 0, 0)];
        }
        if (component != model) {
            qsizetype at = 0;
            while (at < component.size() && at < model.size() && component[at] == model[at]) {
                ++at;
            }
            const qsizetype from = std::max<qsizetype>(0, at - 6);
            FAIL() << "scenario " << seed << " after:\n"
                   << component.mid(from, at - from).join(u'\n').toStdString()
                   << "\ncomponent: " << component.value(at).toStdString()
                   << "\nmodel:     " << model.value(at).toStdString();
        }
    }
    for (const char* each :
         {"WAIT", "START", "GET", "OK", "ERROR", "FINISH", "TIMEOUT", "CANCEL_1", "CANCEL_2", "CANCEL_3",
          "amount", "log", "error", "write", "raised", "cut", "connection"}) {
        EXPECT_GT(seen[each], scenarios / 50) << each;
    }
}

} // namespace
} // namespace tnv5::bank::model
