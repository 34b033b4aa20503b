#pragma once

#include "support/fixture.h"
#include "tnv5/js/js_engine.h"
#include "tnv5/registration/load.h"
#include "tnv5/script/binding.h"

#include <QFile>
#include <chrono>

namespace tnv5::tests {

using js::EScriptError;
using js::TJsEngine;
using js::TScriptFailure;
using namespace std::chrono_literals;

/// An engine with all units, and a port in memory that scripts know as `port`. What scripts print is in the
/// trace.
struct TScriptFixture : TPortFixture
{
    TScriptFixture()
    {
        registration::load(*engine);
        engine->setTimeBudget(10min); // no test judges by the machine's speed
        engine->OnPrint = [this](const QString& text) { trace.note("print " + text); };
        engine->OnError = [this](const TScriptFailure& failure) { failures << failure.message(); };
        engine->RegisterObject("port", port.get());
        trace.attach(*port);
    }
    ~TScriptFixture() { endEngine(); }
    TScriptFixture(const TScriptFixture&) = delete;
    TScriptFixture& operator=(const TScriptFixture&) = delete;

    void endEngine()
    {
        if (engine) {
            registration::unload();
            engine.reset();
        }
    }

    QVariant run(const QString& text) { return engine->evaluate(text, "club.js"); }

    /// Runs an example.
    void runExample(const QString& name)
    {
        QFile file(QStringLiteral(TNV5_SCRIPTS "/") + name);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        engine->evaluate(QString::fromUtf8(file.readAll()), name);
    }

    /// The message of the error that a script ends with; empty: it does not.
    QString failing(const QString& text)
    {
        try {
            run(text);
        } catch (const EScriptError& error) {
            return error.message();
        }
        return {};
    }

    /// A procedure of the host's for this test.
    template <class Body>
    TJsEngine::THandle proc(const char* name, Body body)
    {
        return engine->RegisterProc(script::scriptProc(name, std::move(body)));
    }

    std::unique_ptr<TJsEngine> engine = std::make_unique<TJsEngine>();
    QStringList failures;
};

using TScriptTest = TTestOn<TScriptFixture>;

} // namespace tnv5::tests
