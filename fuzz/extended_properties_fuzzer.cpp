// Face-auth and LLC replies of any length, type, status and failure, and any host code: the
// 40-byte buffer is filled only from a successful reply of exactly 40 bytes, a set writes back
// 40 bytes, and every answer is one of the documented HRESULTs.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "common/hresult.h"
#include "controls/extended_properties.h"
#include "fakes/fake_source_controller.h"
#include "fuzz_log.h"

using namespace vexcap;

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

void configure(FuzzedDataProvider& input, testing::FakeSourceController& controller) {
  controller.get_status = static_cast<platform::GetPropertyStatus>(
      input.ConsumeBool() ? 0 : input.ConsumeIntegral<std::int32_t>());
  controller.set_status = static_cast<platform::SetPropertyStatus>(
      input.ConsumeBool() ? 0 : input.ConsumeIntegral<std::int32_t>());
  if (input.ConsumeIntegralInRange<int>(0, 7) == 0) controller.get_throws = L"get %s failed";
  if (input.ConsumeIntegralInRange<int>(0, 7) == 0) controller.set_throws = L"set %n failed";
  if (input.ConsumeIntegralInRange<int>(0, 7) != 0) {
    const std::size_t length = input.ConsumeBool() ? 40 : input.ConsumeIntegralInRange<std::size_t>(0, 300);
    std::vector<std::uint8_t> bytes = input.ConsumeBytes<std::uint8_t>(length);
    bytes.resize(length, 0x11);
    controller.value = std::move(bytes);
  }
  const std::string type = input.ConsumeRandomLengthString(40);
  controller.type_name.assign(type.begin(), type.end());
}

bool one_of(hresult value, std::initializer_list<hresult> allowed) {
  return std::find(allowed.begin(), allowed.end(), value) != allowed.end();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzzing::log_into_nothing();
  FuzzedDataProvider input(data, size);
  testing::FakeSourceController controller;
  configure(input, controller);
  const controls::PropertyTarget target{&controller, true};
  const bool face_auth = input.ConsumeBool();
  const std::uint32_t host_code = input.ConsumeIntegral<std::uint32_t>();

  // The read.
  std::vector<std::uint8_t> buffer(controls::kExtendedPropertySize, 0xA5);
  const hresult got = face_auth ? controls::get_face_auth_mode(target, buffer.data())
                                : controls::get_llc(target, buffer.data());
  const bool good_reply = !controller.get_throws &&
                          controller.get_status == platform::GetPropertyStatus::Success &&
                          controller.value && controller.value->size() == 40;
  require((got == HR_OK) == good_reply);
  require(one_of(got, {HR_OK, HR_FAIL, HR_BOUNDS, HR_ABORT}));
  if (good_reply) require(buffer == *controller.value);
  else require(std::all_of(buffer.begin(), buffer.end(), [](std::uint8_t b) { return b == 0xA5; }));

  // The write: read, change, write back.
  const hresult set = face_auth ? controls::set_face_auth_mode(target, host_code)
                                : controls::set_llc(target, host_code);
  require(one_of(set, {HR_OK, HR_FAIL, HR_BOUNDS, HR_ABORT, HR_INVALIDARG, HR_NOTIMPL}));
  for (const auto& call : controller.sets) require(call.value.size() == controls::kExtendedPropertySize);
  if (set == HR_OK) require(controller.sets.size() == 1 && good_reply);
  return 0;
}
