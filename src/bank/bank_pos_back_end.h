#pragma once

#include "tnv5/bank/bank_pos_desk.h"

namespace tnv5::bank {

/// One of the outside libraries: how its object is made and which of its methods an operation calls. A
/// back-end has no state of its own. What a library does not have fails without a call.
///
/// A further one is a file with its class and a row in `backEndOf`.
class TPosBackEnd
{
public:
    TPosBackEnd() = default;
    virtual ~TPosBackEnd() = default;
    TPosBackEnd(const TPosBackEnd&) = delete;
    TPosBackEnd& operator=(const TPosBackEnd&) = delete;

    virtual QString progId() const = 0;
    /// Whether the object is a control, whose events the component hears.
    virtual bool isControl() const { return false; }
    /// Tells a created object the settings, and keeps the library's version.
    virtual void init(TPosDesk& desk) const = 0;
    virtual bool connect(TPosDesk& desk) const = 0;
    virtual void disconnect(TPosDesk& desk) const = 0;
    virtual bool purchase(TPosDesk& desk, int amount, int discount, int merchant) const = 0;
    virtual bool cashAdvance(TPosDesk&, int /*amount*/, int /*merchant*/) const { return false; }
    virtual bool purchaseReturn(TPosDesk&, int /*amount*/, const QString& /*rrn*/, const QString& /*authId*/,
                                int /*merchant*/) const
    {
        return false;
    }
    virtual bool xReport(TPosDesk& desk, int merchant) const = 0;
    virtual bool zReport(TPosDesk& desk, int merchant) const = 0;
    virtual bool deviceInfo(TPosDesk&) const { return false; }
    virtual bool test(TPosDesk& desk) const = 0;
    virtual QString merchantId(TPosDesk& desk, int index) const;
    /// Waits for the result of what was begun.
    virtual bool waitResponse(TPosDesk&) const { return false; }
    virtual bool printResponse(TPosDesk&) const { return false; }

protected:
    /// The wait of a library whose last result is a number: 2 in progress, 0 success, 1 failure, which is
    /// reported with the library's code and text.
    /// @param showProgress raises the status event of a pass
    template <class ShowProgress>
    static bool poll(TPosDesk& desk, std::u16string_view lastResult, ShowProgress&& showProgress)
    {
        int result = desk.number(lastResult);
        for (; result == kInProgress; result = desk.number(lastResult)) {
            showProgress();
            desk.letMessagesRun();
        }
        if (result == kRefused) {
            const int code = desk.number(u"GetLastErrorCode");
            desk.error(code, desk.text(u"GetLastErrorText"));
        }
        return result == kSuccess;
    }

    static constexpr int kSuccess = 0;
    static constexpr int kRefused = 1;
    static constexpr int kInProgress = 2;
};

/// The back-end of a `PosType`, nullptr for a number that is none.
const TPosBackEnd* backEndOf(int posType);

// The back-ends, each a file.
const TPosBackEnd& ecrLibBackEnd();
const TPosBackEnd& bpos1BackEnd();
const TPosBackEnd& controlBackEnd();
const TPosBackEnd& bluePadBackEnd();
const TPosBackEnd& cardPayBackEnd();

} // namespace tnv5::bank
