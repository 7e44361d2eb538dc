#include "common/host_callback.h"

namespace vexcap {

namespace {
thread_local int t_host_callback_depth = 0;
}  // namespace

HostCallbackScope::HostCallbackScope() { ++t_host_callback_depth; }
HostCallbackScope::~HostCallbackScope() { --t_host_callback_depth; }

bool inside_host_callback() { return t_host_callback_depth > 0; }

}  // namespace vexcap
