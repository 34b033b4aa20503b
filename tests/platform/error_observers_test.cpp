// Those who only want to know of a port's errors, beside the one who has its error event.

#include "tnv5/testing/memory_port.h"

#include "support/text_printers.h"

#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>

namespace {

using namespace tnv5::platform;
using tnv5::testkit::TMemoryPort;

class ErrorObservers : public testing::Test
{
protected:
    ErrorObservers()
    {
        FPrevious = setExceptionHandler(
            [this](const QString& text, const std::exception_ptr&) { told << "raised " + text; });
        port->OnException = [this](TComponent*, TComExceptionKind, const QString& message, qint64,
                                   const QString&) { told << "event " + message; };
    }
    ~ErrorObservers() override { setExceptionHandler(FPrevious); }

    template <class Body>
    QMetaObject::Connection observe(Body body)
    {
        return QObject::connect(port.get(), &TComPort::errorReported, port.get(), body);
    }
    auto noting(const QString& name)
    {
        return [this, name](TComExceptionKind kind, const QString& message) {
            EXPECT_EQ(kind, TComExceptionKind::Write);
            told << name + ' ' + message;
        };
    }
    void fail() { port->raiseError(TComExceptionKind::Write, "x", 5, "os"); }

    std::unique_ptr<TMemoryPort> port = std::make_unique<TMemoryPort>();
    QStringList told;

private:
    TExceptionHandler FPrevious;
};

TEST_F(ErrorObservers, HearBeforeTheEvent)
{
    observe(noting("first"));
    observe(noting("second"));
    fail();
    EXPECT_EQ(told, QStringList({"first x", "second x", "event x"}));
}

TEST_F(ErrorObservers, DoNotNeedTheEvent)
{
    observe(noting("first"));
    port->OnException = {};
    fail();
    EXPECT_EQ(told, QStringList({"first x"}));
}

TEST_F(ErrorObservers, HearWhatTheEventAborts)
{
    observe(noting("first"));
    port->OnException = [](auto&&...) { throw EAbort(); };
    EXPECT_THROW(port->raiseErrorInside(TComExceptionKind::Write, "x", 5, "os"), EAbort);
    EXPECT_EQ(told, QStringList({"first x"}));
}

TEST_F(ErrorObservers, HearErrorsWithoutANumber)
{
    observe(noting("first"));
    port->raiseError(TComExceptionKind::Write, "x", 0, "");
    EXPECT_EQ(told, QStringList({"first x", "event x"}));
}

TEST_F(ErrorObservers, HearNothingOnceTheyAreGone)
{
    QObject::disconnect(observe(noting("first")));
    fail();
    EXPECT_EQ(told, QStringList({"event x"}));
}

TEST_F(ErrorObservers, ThatRaiseDoNotKeepTheEventFromItsOwner)
{
    observe([](auto&&...) { throw std::runtime_error("observer"); });
    EXPECT_NO_THROW(port->raiseErrorInside(TComExceptionKind::Write, "x", 5, "os"));
    EXPECT_EQ(told, QStringList({"raised observer", "event x"}));
}

TEST_F(ErrorObservers, MayDestroyThePort)
{
    observe([this](auto&&...) { port.reset(); });
    fail();
    EXPECT_EQ(told, QStringList());
}

} // namespace
