#include "frames/rotation_text.h"

#include <gtest/gtest.h>

namespace vexcap::frames {
namespace {

TEST(RotationText, TheThreeRightAnglesAreRecognised) {
  EXPECT_EQ(parse_rotation_text(L"90"), Rotation::By90);
  EXPECT_EQ(parse_rotation_text(L"180"), Rotation::By180);
  EXPECT_EQ(parse_rotation_text(L"270"), Rotation::By270);
}

TEST(RotationText, AnythingElseMeansNoRotation) {
  for (const wchar_t* text : {L"0", L"45", L"360", L"-90", L"", L"abc", L"-", L"+", L" ", L"0x5A",
                              L"900", L"2700", L"99999999999999999999090"}) {
    EXPECT_EQ(parse_rotation_text(text), std::nullopt)
        << testing::PrintToString(std::wstring(text));
  }
}

TEST(RotationText, ParsesALeadingIntegerLikeWcstol) {
  EXPECT_EQ(parse_rotation_text(L" 90"), Rotation::By90);
  EXPECT_EQ(parse_rotation_text(L"\t\r\n 180"), Rotation::By180);
  EXPECT_EQ(parse_rotation_text(L"+270"), Rotation::By270);
  EXPECT_EQ(parse_rotation_text(L"0090"), Rotation::By90);
  EXPECT_EQ(parse_rotation_text(L"90abc"), Rotation::By90);
  EXPECT_EQ(parse_rotation_text(L"270.0"), Rotation::By270);
  EXPECT_EQ(parse_rotation_text(L"180 "), Rotation::By180);
  EXPECT_EQ(parse_rotation_text(L"x90"), std::nullopt);
  EXPECT_EQ(parse_rotation_text(L"+ 90"), std::nullopt);
  EXPECT_EQ(parse_rotation_text(std::wstring_view(L"9012", 2)),
            Rotation::By90);  // no terminator needed
}

}  // namespace
}  // namespace vexcap::frames
