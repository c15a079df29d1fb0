// A write from the button to the last box.
#include "tests/session.h"

namespace {

TEST(Write, MovesTheFileIntoTheUnit) {
    Session session;
    session.upgrade();
    EXPECT_EQ(session.boxes(), "Tarn Beacon|Succeed|65>1\n");
    EXPECT_EQ(session.operations(), "50 51 54 53 ");
    EXPECT_EQ(session.world.unit.receivedImage(), session.world.image);
    EXPECT_TRUE(session.atRest());
    EXPECT_EQ(frmMain().lblVersion[0].caption, "1.046");
}

} // namespace
