#include "apps/tnv5-desk/find_socket.h"
#include "local/local_fixture.h"
#include "tnv5/host/local/local_path.h"
#include "tnv5/platform/errors.h"

#include <QLocalServer>

using namespace tnv5;
using tests::LocalServer;

namespace {

TEST_F(LocalServer, TheDeskFindsTheHostThatAnswers)
{
    const QString left = FFolder.filePath(QStringLiteral("aaa.socket")); // as a killed host leaves it
    const QString made = FFolder.filePath(QStringLiteral("made.socket"));
    QLocalServer killed;
    ASSERT_TRUE(killed.listen(made));
    ASSERT_TRUE(QFile::rename(made, left)); // so that it is not removed
    killed.close();
    ASSERT_TRUE(QFile::exists(left));

    EXPECT_EQ(desk::socketAmong({}), host::usualSocket(QStringLiteral("club")));
    EXPECT_EQ(desk::socketAmong({left}), left);
    EXPECT_EQ(desk::socketAmong({left, path()}), path());
    EXPECT_EQ(desk::socketAmong({left, left + u'2'}), left);
    const QString other = FFolder.filePath(QStringLiteral("other.socket"));
    const host::TLocalServer second(club, other);
    QString why;
    try {
        desk::socketAmong({left, path(), other});
    } catch (const platform::Exception& error) {
        why = error.message();
    }
    EXPECT_EQ(
        why,
        QStringLiteral("Several hosts are here, choose one with --socket:\n  %1\n  %2").arg(path(), other));
}

} // namespace
