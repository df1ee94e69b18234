#include "distributed/listening_port.h"

#include <gtest/gtest.h>

namespace valku {
namespace {

TEST(CallerRule, ThisMachineAndPrivateNetworksMayCallAndWhoeverIsNamed) {
    for (const char* address : {"127.0.0.1", "127.255.255.255", "10.0.0.0", "10.255.255.255", "172.16.0.0",
                                "172.31.255.255", "192.168.0.0", "192.168.255.255", "169.254.0.1"})
        EXPECT_TRUE(mayCall(address, {})) << address;
    for (const char* address : {"126.255.255.255", "128.0.0.0", "9.255.255.255", "11.0.0.0", "172.15.255.255",
                                "172.32.0.0", "192.167.255.255", "192.169.0.0", "169.253.0.1", "0.0.0.0",
                                "198.51.100.7", "", "::1", "10.0.0", "10.0.0.0.0", "10.0.0.0x"})
        EXPECT_FALSE(mayCall(address, {})) << address;

    const auto others = parseNetworks(" 198.51.100.7,203.0.113.77/26\t9.0.0.0/8 , ");
    ASSERT_TRUE(others && others->size() == 3);
    for (const char* address : {"198.51.100.7", "203.0.113.64", "203.0.113.127", "9.8.7.6", "10.1.1.1"})
        EXPECT_TRUE(mayCall(address, *others)) << address;
    for (const char* address : {"198.51.100.6", "203.0.113.63", "203.0.113.128", "8.0.0.0"})
        EXPECT_FALSE(mayCall(address, *others)) << address;
    EXPECT_TRUE(mayCall("8.8.8.8", *parseNetworks("0.0.0.0/0")));
    EXPECT_FALSE(mayCall("8.8.8.8", *parseNetworks("0.0.0.0/32")));
    EXPECT_TRUE(parseNetworks("")->empty());
}

TEST(CallerRule, WhatIsMalformedNamesNobody) {
    for (const char* text : {"x", "1", "1.2.3", "1.2.3.", "1.2.3.256", "1.2.3.4.5", "1.2.3.4/", "1.2.3.4/33",
                             "-1.2.3.4", "1.2.3.4/-1", "1.2.3.4/8x", "+1.2.3.4", "1..2.3", "1.2.3.4;1.2.3.5",
                             "99999999999.1.1.1", "1.2.3.4 host", "8.0.0.0/8, 1.2.3"})
        EXPECT_FALSE(parseNetworks(text)) << text;
}

}  // namespace
}  // namespace valku
