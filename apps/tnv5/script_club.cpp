#include "apps/tnv5/script_club.h"

#include "apps/tnv5/club_run.h"
#include "apps/tnv5/console.h"
#include "apps/tnv5/open_port.h"
#include "tnv5/platform/clock.h"
#include "tnv5/registration/load.h"
#include "tnv5/script/binding.h"
#include "tnv5/turnstile/turnstile_types.h"

#include <QCoreApplication>
#include <QFile>
#include <QScopeGuard>
#include <cstdlib>

namespace tnv5::cli {

using platform::Exception;

namespace {

constexpr int kEndMs = 3'000;
constexpr qint64 kSameQuestionMs = 1'000; // sweeps are nearer to each other, a person's cards are not
constexpr qint64 kSamePassMs = 60'000;    // the same, of a pass that has not ended
constexpr std::size_t kMostAnswers = 1'000;

} // namespace

TScriptClub::TScriptClub(const QString& database, const QStringList& arguments)
    : FEngine(std::make_unique<js::TJsEngine>())
{
    if (!database.isEmpty()) {
        FDatabase.emplace(database, host::TOpening::Existing);
        if (const int abandoned = FDatabase->closeAbandoned(); abandoned > 0) {
            complain(QStringLiteral(
                         "%1 passes were left open by a host that was killed; they have ended as \"%2\"")
                         .arg(abandoned)
                         .arg(host::toText(host::TEnding::Abandoned)));
        }
        FDesk.emplace(*FDatabase);
        FDesk->OnPass = [](const host::TPass& pass) { printNow(host::logLine(pass)); };
        FDesk->OnTrouble = complainNow;
    }
    FEngine->OnPrint = printNow;
    FEngine->OnError = [](const js::TScriptFailure& failure) {
        complainNow(failure.message());
        for (const QString& call : failure.Stack.split(u'\n', Qt::SkipEmptyParts)) {
            complainNow(QStringLiteral("    ") + call);
        }
    };
    registration::load(*FEngine);
    FEngine->RegisterConst(QStringLiteral("Arguments"), arguments);
    registerProcs();
}

TScriptClub::~TScriptClub()
{
    stop();
}

void TScriptClub::registerProcs()
{
    using script::scriptProc;
    FEngine->RegisterProc(scriptProc(
        "OpenPort", [this](const QString& name, int baudRate) { return openPort(name, baudRate); }));
    FEngine->RegisterProc(scriptProc("Decide", [this](const QString& gate, const QString& card, int mode) {
        return decide(gate, card, mode);
    }));
    FEngine->RegisterProc(scriptProc("PictureOf", [this](const QString& card) {
        books();
        return FDesk->pictureFor(card);
    }));
    FEngine->RegisterProc(scriptProc("SetGate", [this](const QString& address, const QString& zone,
                                                       const QString& way) {
        const auto direction = host::toDirection(way);
        if (address.isEmpty() || zone.isEmpty() || !direction) {
            throw Exception(
                QStringLiteral("A gate has an address, a zone, and a direction: in, out or inner"));
        }
        const host::TGate gate{address, zone, *direction};
        if (!books().gates().contains(gate)) {
            FDatabase->setBusyTimeout(host::TDatabase::kStartMs); // a gate that is new: nobody waits there
            const auto usual = qScopeGuard([this] {
                platform::guarded([this] { FDatabase->setBusyTimeout(host::TDatabase::kBusyMs); });
            });
            FDatabase->setGate(gate);
        }
    }));
    FEngine->RegisterProc(scriptProc("Quit", [this] { // also before the event loop runs
        FQuitting = true;
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    }));
}

host::TDatabase& TScriptClub::books()
{
    if (!FDatabase) {
        throw Exception(QStringLiteral("There are no books: start with --db FILE"));
    }
    return *FDatabase;
}

QObject* TScriptClub::openPort(const QString& name, int baudRate)
{
    TPort& opened = *FPorts.emplace_back(std::make_unique<TPort>());
    opened.port.SetPort(name);
    opened.port.SetBaudRate(baudRate);
    opened.keeper.OnOpened = [this, name] {
        printNow(QStringLiteral("%1 is open.").arg(name));
        if (FDesk) {
            FDesk->lineBack(name);
        }
    };
    opened.keeper.OnLost = [this, name](const QString& why) {
        lineLost(name, why);
        complainNow(
            QStringLiteral("%1 went away (%2); it will be opened again when it is back.").arg(name, why));
    };
    opened.keeper.OnCannotOpen = [this, &opened, name](const QString& why) {
        lineLost(name, why);
        complainNow(why);
        if (opened.keeper.openings() == 0) {
            explain(name, opened.keeper.osError(), complainNow);
        }
    };
    opened.keeper.start(); // a port that is not there yet is waited for
    return &opened.port;
}

/// An outage in the journal, if there is one.
void TScriptClub::lineLost(const QString& name, const QString& why)
{
    if (FDesk) {
        FDesk->lineLost(name, why);
    }
}

// A component asks again at its next sweep when a handler has failed behind the answer. That is no other
// card: it gets the same answer, and nothing is written.
int TScriptClub::decide(const QString& gate, const QString& card, int mode)
{
    books();
    const qint64 now = platform::TClock::current().nowMs();
    const auto isSame = [&](const TAnswer& last) {
        const bool underWay = mode == turnstile::cmOpen && last.answer == 1 && FDesk->hasPass(gate, card);
        return last.mode == mode && std::abs(now - last.askedMs) < (underWay ? kSamePassMs : kSameQuestionMs);
    };
    if (FAnswers.size() >= kMostAnswers) {
        std::erase_if(FAnswers,
                      [&](const auto& each) { return std::abs(now - each.second.askedMs) >= kSamePassMs; });
    }
    TAnswer& last = FAnswers.try_emplace({gate, card}, TAnswer{-1, 0, now}).first->second;
    if (!isSame(last)) {
        last = {mode, askBooks(gate, card, mode), now};
    }
    last.askedMs = now;
    return last.answer;
}

int TScriptClub::askBooks(const QString& gate, const QString& card, int mode)
{
    if (mode == turnstile::cmOpen) {
        return int(FDesk->decideNew(gate, card).opened());
    }
    if (const auto ending = host::endingOf(mode)) {
        FDesk->endPass(gate, card, *ending);
        return 1;
    }
    return 0;
}

bool TScriptClub::start(const QString& file)
{
    QFile script(file);
    if (!script.open(QIODevice::ReadOnly)) {
        complain(QStringLiteral("%1: %2").arg(file, script.errorString()));
        return false;
    }
    try {
        FEngine->evaluate(QString::fromUtf8(script.readAll()), file);
        return true;
    } catch (const js::EScriptError&) {
        return false; // told by the engine
    }
}

bool TScriptClub::stop()
{
    if (FEngine) {
        registration::unload();
        FEngine.reset();
    }
    for (const auto& each : FPorts) {
        each->keeper.stop();
    }
    bePatient(kEndMs); // no gate waits any more
    if (!FDesk) {
        return true;
    }
    FDesk->close();
    if (FDesk->lost() > 0) {
        complainNow(QStringLiteral("%1 entries are NOT in the journal").arg(FDesk->lost()));
    }
    const QString misplaced = rescueBooks(*FDatabase);
    if (!misplaced.isEmpty()) {
        complainNow(misplaced);
    }
    return FDesk->lost() == 0 && misplaced.isEmpty();
}

} // namespace tnv5::cli
