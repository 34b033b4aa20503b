// Who may connect to a server socket.

#include "tnv5/platform/errors.h"
#include "tnv5/platform/socket_access.h"

#include <gtest/gtest.h>

namespace tnv5::tests {

using platform::admission;
using platform::TAdmission;
using platform::TPeerRule;
using platform::TServerAccess;

namespace {

TAdmission admit(const QString& address, const QList<TPeerRule>& rules)
{
    TServerAccess access;
    access.peers = rules;
    return admission(access, address);
}

TEST(SocketAccess, WithoutAListAllFeed)
{
    EXPECT_EQ(admission({}, "203.0.113.9"), TAdmission::Feeds);
}

TEST(SocketAccess, AnEmptyListLetsNobodyIn)
{
    EXPECT_EQ(admit("127.0.0.1", {}), TAdmission::Refused);
}

TEST(SocketAccess, Networks)
{
    EXPECT_EQ(admit("10.0.0.9", {{"10.0.0.9", true}}), TAdmission::Feeds);
    EXPECT_EQ(admit("10.0.0.8", {{"10.0.0.9", true}}), TAdmission::Refused);
    EXPECT_EQ(admit("10.0.0.255", {{"10.0.0.0/24", false}}), TAdmission::Watches);
    EXPECT_EQ(admit("10.0.1.0", {{"10.0.0.0/24", false}}), TAdmission::Refused);
    EXPECT_EQ(admit("10.0.0.7", {{"10.0.0.0/29", true}}), TAdmission::Feeds);
    EXPECT_EQ(admit("10.0.0.8", {{"10.0.0.0/29", true}}), TAdmission::Refused);
    EXPECT_EQ(admit("10.9.9.9", {{"0.0.0.0/0", true}}), TAdmission::Feeds);
    EXPECT_EQ(admit("10.0.0.9", {{"10.0.0.0/255.255.255.0", true}}), TAdmission::Feeds);
    EXPECT_EQ(admit("fe80::1", {{"fe80::/64", true}}), TAdmission::Feeds);
    EXPECT_EQ(admit("fe81::1", {{"fe80::/64", true}}), TAdmission::Refused);
    EXPECT_EQ(admit("::1", {{"127.0.0.1", true}}), TAdmission::Refused);
}

// As a socket tells the address of an IPv4 client when it listens to both.
TEST(SocketAccess, MappedAddresses)
{
    EXPECT_EQ(admit("::ffff:10.0.0.9", {{"10.0.0.0/24", true}}), TAdmission::Feeds);
    EXPECT_EQ(admit("::ffff:10.0.1.9", {{"10.0.0.0/24", true}}), TAdmission::Refused);
}

TEST(SocketAccess, TheFirstRuleThatFitsHolds)
{
    const QList<TPeerRule> rules = {{"10.0.0.9", false}, {"10.0.0.0/24", true}, {"10.0.0.8", false}};
    EXPECT_EQ(admit("10.0.0.9", rules), TAdmission::Watches);
    EXPECT_EQ(admit("10.0.0.8", rules), TAdmission::Feeds);
}

TEST(SocketAccess, WhatIsNoNetwork)
{
    for (const char* const text :
         {"", "10", "10.1", "10.0.0", "10.0.0.", "10.0.0.256", "10.0.0.0/33", "10.0.0.0/-1", "10.0.0.0/",
          "fe80::/129", "desk", "desk/24", "*", "10.0.0.0/24/24"}) {
        TServerAccess access;
        access.peers = QList<TPeerRule>{{text, true}};
        EXPECT_THROW(check(access), platform::EConvertError) << text;
    }
    TServerAccess access;
    access.peers = QList<TPeerRule>{{"10.0.0.0/24", true}, {"::1", false}};
    EXPECT_NO_THROW(check(access));
    for (const char* const text : {"", "desk", "10.0.0.0/24"}) {
        access.listenAddress = text;
        EXPECT_THROW(check(access), platform::EConvertError) << text;
    }
}

} // namespace

} // namespace tnv5::tests
