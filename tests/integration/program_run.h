#pragma once

#include "support/wait.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <csignal>
#include <gtest/gtest.h>

namespace tnv5::integration {

/// A program as a person starts and stops it. It is waited for, a minute for each thing, and killed when it
/// is still there at the end; what it leaves behind then goes away with its own temporary folder.
class TProgramRun
{
public:
    explicit TProgramRun(const QString& program, const QStringList& arguments)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("TMPDIR"), FTemporary.path());
        FProgram.setProcessEnvironment(environment);
        FProgram.start(program, arguments);
    }
    ~TProgramRun()
    {
        FProgram.kill();
        FProgram.waitForFinished();
    }
    TProgramRun(const TProgramRun&) = delete;
    TProgramRun& operator=(const TProgramRun&) = delete;

    /// Waits until a text has been printed, as output or as a complaint.
    bool says(const QString& text)
    {
        return eventually([&] { return output().contains(text) || complaints().contains(text); });
    }

    /// Waits for the end. @return -1 when it does not come
    int exitCode()
    {
        const bool ended = eventually([&] { return FProgram.state() == QProcess::NotRunning; });
        return ended && FProgram.exitStatus() == QProcess::NormalExit ? FProgram.exitCode() : -1;
    }

    void stop() { FProgram.terminate(); }
    /// Closes its terminal, as it looks to the program.
    void hangUp()
    {
        ASSERT_GT(pid(), 0) << "it has ended"; // 0 would be the test itself
        EXPECT_EQ(kill(pid_t(pid()), SIGHUP), 0);
    }
    qint64 pid() const { return FProgram.processId(); }
    bool running() const { return FProgram.state() != QProcess::NotRunning; }

    /// What has been printed so far.
    QString output()
    {
        FOutput += FProgram.readAllStandardOutput();
        return QString::fromUtf8(FOutput);
    }
    QString complaints()
    {
        FComplaints += FProgram.readAllStandardError();
        return QString::fromUtf8(FComplaints);
    }

private:
    QTemporaryDir FTemporary;
    QProcess FProgram;
    QByteArray FOutput;
    QByteArray FComplaints;
};

} // namespace tnv5::integration
