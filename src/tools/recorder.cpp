#include "tnv5/tools/recording.h"

namespace tnv5::tools {

TRecorder::TRecorder(QIODevice& device, const QString& remark) : FDevice(&device)
{
    QString oneLine = remark;
    oneLine.replace(u'\n', u' ').replace(u'\r', u' ');
    FRemark = "# " + oneLine.toUtf8();
    begin();
}

void TRecorder::begin()
{
    write(kRecordingHeader);
    write(FRemark);
}

void TRecorder::goOnIn(QIODevice& device)
{
    FDevice = &device;
    begin();
}

void TRecorder::add(TDirection direction, const QByteArray& bytes)
{
    qint64 us = FSinceLast.isValid() ? FSinceLast.nsecsElapsed() / 1'000 : 0;
    FSinceLast.start();
    for (; us > kMaxWaitUs; us -= kMaxWaitUs) { // no entry waits longer
        write(formatEntry({kMaxWaitUs, TDirection::Unknown, {}}));
    }
    write(formatEntry({us, direction, bytes}));
}

void TRecorder::write(const QByteArray& line)
{
    const qint64 before = FDevice->isSequential() ? -1 : FDevice->pos();
    const QByteArray bytes = line + '\n';
    qint64 done = 0;
    while (done <
           bytes.size()) { // a disk that has just become full takes a part, and then says why not the rest
        const qint64 taken = FDevice->write(bytes.constData() + done, bytes.size() - done);
        if (taken <= 0) {
            break;
        }
        done += taken;
    }
    if (done == bytes.size()) {
        return;
    }
    const QString why = FDevice->errorString();
    if (auto* const file = qobject_cast<QFile*>(FDevice); file != nullptr && before >= 0) {
        file->resize(before); // half an entry could not be read
    }
    throw ERecording(QStringLiteral("the recording cannot be written: ") + why);
}

TRecordFile::TRecordFile(const QString& name, const QString& remark, bool force, qint64 rotateAt)
    : FName(name), FForce(force), FRotateAt(rotateAt), FFile(open(name))
{
    try {
        FRecorder = std::make_unique<TRecorder>(*FFile, remark);
    } catch (const ERecording& error) {
        throw ERecording(FName + QStringLiteral(": ") + error.message());
    }
}

TRecordFile::~TRecordFile() = default;

void TRecordFile::add(TDirection direction, const QByteArray& bytes)
{
    try {
        if (FRotateAt > 0 && FFile->size() >= FRotateAt) {
            auto next = open(freeName());
            FRecorder->goOnIn(*next);
            FFile = std::move(next);
        }
        FRecorder->add(direction, bytes);
    } catch (const ERecording& error) {
        const QString name = FFile->fileName();
        throw ERecording(error.message().startsWith(FName) ? error.message()
                                                           : name + QStringLiteral(": ") + error.message());
    }
}

std::unique_ptr<QFile> TRecordFile::open(const QString& name) const
{
    auto file = std::make_unique<QFile>(name);
    const QIODevice::OpenMode mode =
        FForce ? QIODevice::WriteOnly | QIODevice::Truncate : QIODevice::WriteOnly | QIODevice::NewOnly;
    if (file->open(mode | QIODevice::Unbuffered)) {
        return file;
    }
    throw ERecording(!FForce && QFile::exists(name)
                         ? name + QStringLiteral(": the file is there already; --force overwrites it")
                         : QStringLiteral("%1: %2").arg(name, file->errorString()));
}

QString TRecordFile::freeName()
{
    QString name;
    do {
        name = QStringLiteral("%1.%2").arg(FName).arg(++FNumber);
    } while (!FForce && QFile::exists(name));
    return name;
}

} // namespace tnv5::tools
