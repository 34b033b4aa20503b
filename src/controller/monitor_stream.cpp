#include "tnv5/controller/monitor_stream.h"

#include "tnv5/common/messages.h"

#include <algorithm>

namespace tnv5::controller {

namespace {

constexpr qsizetype kMaxStatusRest = 1000;

// Finds the first place of a text at or behind a position that only grows, and searches no place twice.
class TFirstPlace
{
public:
    TFirstPlace(QStringView text, QStringView sought) : FText(text), FSought(sought) {}

    /// Place at or behind `from` and before `end`; -1 when there is none.
    qsizetype from(qsizetype from, qsizetype end)
    {
        if (FPlace >= 0 && FPlace < from) {
            FPlace = FText.indexOf(FSought, from);
        }
        return FPlace >= 0 && FPlace + FSought.size() <= end ? FPlace : -1;
    }

    qsizetype size() const { return FSought.size(); }

private:
    QStringView FText;
    QStringView FSought;
    qsizetype FPlace = FText.indexOf(FSought);
};

class TStreamCutter
{
public:
    TStreamCutter(QStringView read, const TStreamDialect& dialect)
        : FRead(read), FDialect(dialect), FEnd(read.size())
    {
    }

    std::vector<TMonitorText> texts()
    {
        bool found = true;
        while (found) {
            found = take(FLog, FDialect.keptBehindLog, [this](auto body, auto end) {
                addLine(FDialect.endsBehindTag ? FRead.sliced(body, end - body) : counted(body, end, 5));
            });
            found |= take(FError, FDialect.keptBehindError, [this](auto body, auto end) {
                // counted so that the "&" stays; intended
                addLine(FDialect.endsBehindTag ? FRead.sliced(body, end - body) : counted(body, end, 6));
            });
            found |= take(FStatus, FDialect.keptBehindStatus, [this](auto body, auto) {
                addStatus(FRead.sliced(body, std::min(FEnd - body, kMaxStatusRest)));
            });
        }
        return std::move(FTexts);
    }

private:
    // Takes one text with this tag off the buffer. @return false when there is none, or none with an end
    template <class Add>
    bool take(TFirstPlace& tag, qsizetype kept, Add add)
    {
        const qsizetype at = tag.from(FBegin, FEnd);
        if (at < 0) {
            return false;
        }
        const qsizetype body = at + tag.size();
        const qsizetype end = FAmpersand.from(FDialect.endsBehindTag ? body : FBegin, FEnd);
        if (end < 0) {
            FBegin = FEnd; // what is left is dropped
            return false;
        }
        add(body, end);
        FBegin = end + 1;
        FEnd = FBegin + std::min(kept, FEnd - FBegin);
        return true;
    }

    // Counted from the start of the buffer: right only for a tag that stands there; intended.
    QStringView counted(qsizetype body, qsizetype end, qsizetype less) const
    {
        const qsizetype endPosition = end - FBegin + 1;
        return FRead.sliced(body, std::clamp<qsizetype>(endPosition - less, 0, FEnd - body));
    }

    void addLine(QStringView text) { FTexts.push_back({TMonitorText::Line, text.toString(), {}}); }

    void addStatus(QStringView rest)
    {
        if (FDialect.statusFields == 0) {
            return;
        }
        QStringList fields;
        while (fields.size() < FDialect.statusFields) {
            const bool last = fields.size() == FDialect.statusFields - 1;
            const qsizetype end = rest.indexOf(last ? u'&' : u'!');
            fields << rest.first(std::max<qsizetype>(end, 0)).toString(); // empty without its end
            rest = rest.sliced(end + 1);
        }
        FTexts.push_back({TMonitorText::Status, {}, fields});
    }

    QStringView FRead;
    const TStreamDialect& FDialect;
    qsizetype FBegin = 0; // of the buffer
    qsizetype FEnd;
    TFirstPlace FLog{FRead, common::kLogTag};
    TFirstPlace FError{FRead, common::kErrorTag};
    TFirstPlace FStatus{FRead, common::kStatusTag};
    TFirstPlace FAmpersand{FRead, u"&"};
    std::vector<TMonitorText> FTexts;
};

} // namespace

std::vector<TMonitorText> monitorTexts(QStringView read, const TStreamDialect& dialect)
{
    return TStreamCutter(read, dialect).texts();
}

} // namespace tnv5::controller
