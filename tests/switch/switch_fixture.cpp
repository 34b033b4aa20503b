#include "switch_fixture.h"

namespace tnv5::tests {

QString read(const QString& line)
{
    return QStringLiteral("log %Считано с порта*% ") + line;
}

QString loggedSend(const QString& command)
{
    return QStringLiteral("log %Отправлено на порт% ") + command;
}

QString report(const QString& name, const QString& job)
{
    return QStringLiteral("status ") + name + u'!' + job + u'!';
}

QString reached(const QString& job)
{
    return report("XXXSTACK", job);
}

QString stack(const QString& job)
{
    return report("STACK", job);
}

QString check(const QString& job, int mode)
{
    return QStringLiteral("check %1 mode %2 preset 1").arg(job).arg(mode);
}

QString asked(const QString& job)
{
    return QStringLiteral("new %1 preset OFF").arg(job);
}

QString monitor(const QString& text)
{
    return QStringLiteral("monitor ") + text;
}

TSwitchFixture::TSwitchFixture(qint64 startMs) : TFixture(startMs)
{
    trace.Separator = u'!';
    device->SetConnector(link.get());
    attach();
}

void TSwitchFixture::attach()
{
    trace.attach(*device);
    device->SetOnCheckSQL(Host.handler(trace, *device));
    device->SetOnNewItem([this](TComponent* Sender, const QVariant& ADevice, const QVariant& ARelay,
                                const QVariant& AStatus, const QVariant& AStatusDevice, QVariant& Wanted) {
        EXPECT_EQ(Sender, device.get());
        const QString line =
            QStringLiteral("new ") +
            QStringList{ADevice.toString(), ARelay.toString(), AStatus.toString(), AStatusDevice.toString()}
                .join(u'!') +
            QStringLiteral(" preset ") + Wanted.toString();
        if (NewStatus.isValid()) {
            Wanted = NewStatus;
        }
        trace.add(line);
    });
}

void TSwitchFixture::inject(const QString& line)
{
    if (link) {
        link->GetCommand(line);
    }
}

switching::PRFidInfo TSwitchFixture::makeJob(const QString& job, int seconds)
{
    const QStringList parts = job.split(u'!');
    const switching::PRFidInfo made = device->StackItem(device->p_hw_FindDevice(kLink, parts[0], parts[1]));
    made->Status = parts[2];
    made->StatusDevice = parts[3];
    made->Finishtime = platform::Now() + seconds / 86'400.0;
    return made;
}

QString TSwitchFixture::jobAt(int index) const
{
    const switching::PRFidInfo job = device->StackItem(index);
    return job ? QStringList{job->Device, job->Relay, job->Status, job->StatusDevice}.join(u'!')
               : QStringLiteral("no job");
}

} // namespace tnv5::tests
