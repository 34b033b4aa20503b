#pragma once

#include "support/wait.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QFile>
#include <QString>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

/// A program that has a device open, without any serial library.
class TProgram
{
public:
    explicit TProgram(const QString& path)
        : FFd(::open(QFile::encodeName(path).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
    {
    }
    ~TProgram()
    {
        if (valid()) {
            ::close(FFd);
        }
    }
    TProgram(const TProgram&) = delete;
    TProgram& operator=(const TProgram&) = delete;

    bool valid() const { return FFd >= 0; }

    bool write(const QByteArray& bytes) const
    {
        return ::write(FFd, bytes.constData(), std::size_t(bytes.size())) == bytes.size();
    }

    /// What is there to read now.
    QByteArray read() const
    {
        std::array<char, 4'096> buffer{};
        const ssize_t count = ::read(FFd, buffer.data(), buffer.size());
        return count > 0 ? QByteArray(buffer.data(), count) : QByteArray();
    }

    /// Reads until there are `size` bytes, or for as long as `eventually` waits.
    QByteArray readUntil(qsizetype size) const
    {
        QByteArray received;
        eventually([&] {
            received += read();
            return received.size() >= size;
        });
        return received;
    }

    /// Whether the device has gone away under the program.
    bool hungUp() const
    {
        return eventually([this] {
            char byte = 0;
            const ssize_t count = ::read(FFd, &byte, 1);
            return count == 0 || (count < 0 && errno == EIO);
        });
    }

private:
    int FFd;
};
