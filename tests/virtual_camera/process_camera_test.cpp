// The process's virtual camera as host programs and the library's tests steer it.
#include <gtest/gtest.h>

#include "platform/virtual/virtual_camera.h"
#include "virtual_camera/virtual_test_support.h"

namespace vexcap::virtual_camera {
namespace {

using namespace std::chrono_literals;

class ProcessCamera : public ::testing::Test {
 protected:
  void TearDown() override { reset(); }
};

TEST_F(ProcessCamera, EnumerationKeepsScenarioOrderWithNullEntriesAndMissingParts) {
  Scenario scenario = default_scenario();
  GroupModel odd;
  odd.null_in_enumeration = true;
  GroupModel bare;
  bare.source_infos_missing = true;
  scenario.groups = {odd, scenario.groups[0], bare};
  use_scenario(scenario);
  auto groups = platform::current().find_all_source_groups();
  ASSERT_EQ(groups.size(), 3u);
  EXPECT_EQ(groups[0], nullptr);
  EXPECT_EQ(groups[1]->id(), testing::default_group_id());
  EXPECT_EQ(groups[1]->source_infos()->size(), 2u);
  EXPECT_FALSE(groups[2]->id().has_value());
  EXPECT_FALSE(groups[2]->source_infos().has_value());
}

TEST_F(ProcessCamera, ResetRestoresDefaultsFaultsAndRuntime) {
  runtime().set_mf_startup_result(HR_FAIL);
  set_call_fault(PlatformCall::FindAllSourceGroups, {HR_FAIL, {}});
  EXPECT_THROW(platform::current().find_all_source_groups(), platform::PlatformError);
  reset();
  EXPECT_EQ(runtime().mf_startup(), HR_OK);
  EXPECT_EQ(platform::current().find_all_source_groups().size(), 1u);
  EXPECT_TRUE(records().ks_requests.empty());
}

}  // namespace
}  // namespace vexcap::virtual_camera
