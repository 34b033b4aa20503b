#pragma once

#include "sim/byte_stream.h"
#include "tnv5/platform/timer.h"

#include <QObject>
#include <QString>
#include <QTemporaryDir>
#include <QTimer>

class QSocketNotifier;

namespace tnv5::sim {

/// The equipment's end of a pseudo-terminal; programs open the other end, `path()`, as a serial port.
///
/// It behaves like an adapter with a cable: `unplug` takes the device away under whoever has it open, and
/// `plug` brings it back under the same path. What is sent while nobody has the device open is lost, and so
/// is what the program had not read when it closed it.
class TPty final : public QObject, public TByteStream
{
    Q_OBJECT

public:
    /// Bytes that may wait for a program that does not read; what exceeds this is lost.
    static constexpr qsizetype kMaxQueued = 65'536;

    /// Creates the device, plugged in, in a directory that only this user can enter.
    /// @param name file name of the device, without directories
    /// @throws platform::Exception when the name is not a file name or the system has no pseudo-terminal.
    explicit TPty(const QString& name);
    ~TPty() override;

    /// What to give to a program as its serial port; stays the same for the life of this object.
    QString path() const { return FPath; }

    void write(const QByteArray& bytes) override;

    bool plugged() const { return FMaster >= 0; }
    /// Takes the device away; whoever has it open sees it hang up. Unplugging twice changes nothing.
    void unplug();
    /// Brings the device back. Plugging twice changes nothing.
    /// @throws platform::Exception when the system has no pseudo-terminal.
    void plug();

    /// Whether a program has the device open, as far as it has been noticed: a program that has just come is
    /// noticed within 20 ms or at the next write.
    bool opened() const { return FOpened; }
    /// Whether nothing is on its way at this end: what a program wrote has been read, its coming or going has
    /// been noticed, and what is queued waits for its time or for the program to read.
    bool settled() const;
    /// Called when a program opens (true) or closes (false) the device.
    std::function<void(bool opened)> OnOpened;

    /// Bytes written that no program will ever see.
    qint64 lostBytes() const { return FLost; }

    /// Speed of the line towards the program, ten bits to a byte; 0 sends as fast as the program reads.
    int BaudRate = 0;

private:
    void closeMaster();
    void lookForProgram();
    bool noticeOpening();
    void noticeClosing();
    void stopWatching();
    void onReadable();
    void sendQueue();
    void sendPaced();
    void send(qsizetype limit);
    void tellOpened(bool opened);

    QTemporaryDir FDirectory;
    QString FPath;
    int FMaster = -1;
    quint64 FPlugs = 0; // tells one pseudo-terminal from the next, which may have the same descriptor
    bool FOpened = false;
    QSocketNotifier* FReadable = nullptr; // only while a program has the device open
    QSocketNotifier* FWritable = nullptr; // the same
    QTimer FPresence;                     // looks for a program while there is none
    platform::TTimer FPace;
    QByteArray FQueue;
    qint64 FCredit = 0; // thousandths of a bit that the line has had time for
    qint64 FLost = 0;
};

} // namespace tnv5::sim
