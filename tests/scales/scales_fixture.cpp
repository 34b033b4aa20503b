#include "scales_fixture.h"

namespace tnv5::tests {

QString weighed(int weight)
{
    return QStringLiteral("weight %1").arg(weight);
}

QString got(const QByteArray& packet)
{
    return logged(QStringLiteral("[03] Get from port ") + QString::fromLatin1(packet));
}

QStringList sent(const QByteArray& bytes)
{
    return {wrote(bytes), logged(QStringLiteral("[05] Send to port ") + QString::fromLatin1(bytes))};
}

QStringList received(const QByteArray& packet)
{
    return {kStart, kStop, got(packet)};
}

TScalesFixture::TScalesFixture(qint64 startMs) : TPortFixture(startMs)
{
    clock.OnWait = [this] { wait(); };
    scales->SetIDLang(2);
    port->SetPort(QStringLiteral("COM7"));
    scales->SetComport(port.get());
    attach();
}

void TScalesFixture::attach()
{
    trace.attach(*scales);
    scales->SetOnWeight([this, note = scales->OnWeight()](TComponent* Sender, int Weight) {
        EXPECT_EQ(scales->LastWeight(), Weight) << "stored before it is told";
        note(Sender, Weight);
    });
}

void TScalesFixture::use(int type)
{
    scales->SetScalesType(type);
    trace.take();
}

void TScalesFixture::ask()
{
    scales->GetWeight(true);
    trace.take();
}

std::function<void()> TScalesFixture::arrives(const QByteArray& bytes, qint64 afterMs)
{
    return [this, bytes, afterMs] {
        clock.advance(afterMs);
        feed(bytes);
    };
}

qint64 TScalesFixture::timeOfWeighing(int* weight)
{
    const qint64 begin = clock.nowMs();
    const int result = scales->GetWeight(false);
    if (weight != nullptr) {
        *weight = result;
    }
    return clock.nowMs() - begin;
}

void TScalesFixture::wait()
{
    ++passes;
    if (passes > 100'000) {
        throw std::logic_error("the component waits for ever");
    }
    if (Waits.empty()) {
        clock.advance(10);
        return;
    }
    const auto step = Waits.front();
    Waits.pop_front();
    step();
}

} // namespace tnv5::tests
