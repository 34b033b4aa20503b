#include "model/scales_line_model.h"

#include <QByteArrayList>
#include <array>

namespace tnv5::scales::model {

namespace {

constexpr qsizetype kLongestPacket = 65'536;

} // namespace

qint64& reached(TBranch branch)
{
    static std::array<qint64, size_t(TBranch::Count)> counts{};
    return counts.at(size_t(branch));
}

QByteArray branchName(TBranch branch)
{
    return QByteArray(kBranches).split(',').at(int(branch)).trimmed();
}

void TSplitterModel::attach(TPortModel* port)
{
    if (FPort != nullptr) {
        FPort->splitter = nullptr;
    }
    FPort = port;
    if (port != nullptr) {
        port->splitter = this;
    }
    FBuffer.clear();
    FInside = false;
    ++FAttachments;
}

void TSplitterModel::append(const QByteArray& bytes)
{
    FBuffer += bytes;
    if (FAsking) {
        reach(TBranch::SplitReadInSearch);
        return; // the search under way goes on with it
    }
    if (FDelivering) {
        reach(TBranch::SplitReadInPacket);
    }
    bool more = true;
    for (int rounds = 0; more && !FBuffer.isEmpty(); ++rounds) {
        if (rounds == 1) {
            reach(TBranch::SplitAgainInRead);
        }
        more = step();
    }
}

/// One round; false when the next read must be awaited.
bool TSplitterModel::step()
{
    if (!FInside) {
        const TAnswer answer = ask(askStart);
        if (answer.obsolete) {
            reach(TBranch::SplitAttachedInSearch);
            return true;
        }
        qsizetype position = answer.position;
        FStartedByString = position == -1;
        if (FStartedByString) {
            position = startString.isEmpty() ? 0 : FBuffer.indexOf(startString) + 1;
        }
        if (position <= 0) {
            reach(TBranch::SplitStartMissing);
            FBuffer.clear(); // no start string is longer than one byte: nothing can be the beginning of one
            return false;
        }
        reach(FStartedByString ? TBranch::SplitStartString : TBranch::SplitStartPosition);
        if (position > 1) {
            reach(TBranch::SplitDropBefore);
        }
        FBuffer.remove(0, position - 1);
        FInside = true;
    }
    return takePacket();
}

bool TSplitterModel::takePacket()
{
    const TAnswer answer = ask(askStop);
    if (answer.obsolete) {
        reach(TBranch::SplitAttachedInSearch);
        return true;
    }
    qsizetype begin = 0;
    qsizetype end = answer.position;
    qsizetype taken = answer.position;
    if (answer.position == -1) {
        begin = FStartedByString ? startString.size() : 0;
        end = stopString.isEmpty() ? -1 : FBuffer.indexOf(stopString, begin);
        taken = end < 0 ? 0 : end + stopString.size();
    }
    const bool found = taken > 0;
    if (found ? taken > kLongestPacket : FBuffer.size() >= kLongestPacket) {
        reach(TBranch::SplitOverlong);
        FBuffer.remove(0, kLongestPacket);
        FInside = false;
        return true;
    }
    if (!found) {
        reach(TBranch::SplitWait);
        return false;
    }
    const bool byString = answer.position == -1;
    reach(byString ? (FStartedByString ? TBranch::SplitStopString : TBranch::SplitMixedPositionString)
                   : (FStartedByString ? TBranch::SplitMixedStringPosition : TBranch::SplitStopPosition));
    const QByteArray packet = FBuffer.mid(begin, end - begin);
    if (packet.isEmpty()) {
        reach(TBranch::SplitEmptyPacket);
    }
    FBuffer.remove(0, taken);
    FInside = false;
    ++FDelivering;
    try {
        deliver(packet);
    } catch (const TFailure& failure) {
        reach(TBranch::SplitRaised);
        if (!failure.silent) {
            FHost(TEvent::Unhandled, failure.text);
        }
    } // gone: the splitter is not used any more
    --FDelivering;
    return true;
}

TSplitterModel::TAnswer TSplitterModel::ask(const TAsk& handler)
{
    const int attachments = FAttachments;
    TAnswer answer;
    FAsking = true;
    try {
        handler(QByteArray(FBuffer), answer.position);
    } catch (const TFailure& failure) {
        reach(TBranch::SplitSearchRaised);
        answer.position = 0; // counts as not found
        if (!failure.silent) {
            FHost(TEvent::Unhandled, failure.text);
        }
    }
    FAsking = false;
    answer.obsolete = attachments != FAttachments;
    return answer;
}

TPortModel::~TPortModel()
{
    if (splitter != nullptr) {
        splitter->forgetPort();
    }
}

void TPortModel::open()
{
    if (connected) {
        return;
    }
    FHost(TEvent::Opening, name);
    if (openFailure) {
        throw TFailure{*openFailure};
    }
    connected = true;
}

void TPortModel::close()
{
    FHost(TEvent::Closing, name);
    if (closeFailure) {
        throw TFailure{*closeFailure};
    }
    connected = false;
}

void TPortModel::write(const QByteArray& bytes)
{
    FHost(TEvent::Writing, {});
    if (writeFailure) {
        throw TFailure{*writeFailure};
    }
    FHost(TEvent::Written, QString::fromLatin1(bytes));
}

void TPortModel::feed(const QByteArray& bytes)
{
    if (splitter != nullptr) {
        guardedCall(FHost, [&] { splitter->append(bytes); });
    }
}

} // namespace tnv5::scales::model
