// The built-in self-check passes on a host that is not the shipped one.
#include <gtest/gtest.h>

#include "names/names_manager.h"
#include "tests/steered_host.hpp"

TEST(SelfCheck, PassesOnAForeignHost) {
    EXPECT_EQ(0, NamesManager_SelfCheck());
    EXPECT_EQ(0, steered::takeReports().nAssertions);
    EXPECT_EQ(0, HostMem_GetNumLive());
    EXPECT_EQ("", HostMem_TakeRefusals());
}
