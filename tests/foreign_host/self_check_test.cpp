// The built-in self-check passes on a host that is not the shipped one.
#include <gtest/gtest.h>

#include "foreign_host.h"
#include "names/names_manager.h"

TEST(SelfCheck, PassesOnAForeignHost) {
    EXPECT_EQ(0, NamesManager_SelfCheck());
    EXPECT_EQ(0, g_foreignHost.nAssertions);
    EXPECT_EQ(0, g_foreignHost.nLockDepth);
    EXPECT_EQ(0, g_foreignHost.nLive);
    EXPECT_EQ("", g_foreignHost.refusals);
}
