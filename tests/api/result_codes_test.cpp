#include <gtest/gtest.h>

#include "api/result_codes.h"
#include "vexcap/vexcap.h"

namespace vexcap::api {
namespace {

struct Row {
  std::uint32_t hresult_bits;
  int code;
};

TEST(ResultCodes, EachHandlerResultMapsToItsCode) {
  const Row rows[] = {
      {0x00000000, 0},   {0x8007139F, -2},  {0x80070005, -4}, {0x000005B4, -3},
      {0x80070057, -5},  {0x80004002, -6},  {0x800705B4, -1},  // wrapped time-out is no time-out
      {0x00000001, -1},  // S_FALSE is not success here
      {0x00000010, -1},  {0x80004005, -1},  {0x80004001, -1}, {0x8000FFFF, -1},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(to_result_code(static_cast<hresult>(row.hresult_bits)), row.code)
        << std::hex << row.hresult_bits;
  }
}

}  // namespace
}  // namespace vexcap::api
