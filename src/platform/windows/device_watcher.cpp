#include "platform/windows/device_watcher.h"

#include "platform/windows/activation.h"
#include "platform/windows/delegate.h"
#include "platform/windows/device_information.h"
#include "platform/windows/event_token.h"
#include "platform/windows/winrt/abi.h"

namespace vexcap::windows {

namespace {

using UpdateEvent = abi::ITypedEventHandler<abi::DeviceWatcher, abi::DeviceInformationUpdate>;
using UpdateSubscription = HRESULT (STDMETHODCALLTYPE abi::IDeviceWatcher::*)(UpdateEvent*, abi::EventRegistrationToken*);

platform::EventToken add_update_handler(const ComPtr<abi::IDeviceWatcher>& watcher, UpdateSubscription subscribe,
                                        platform::DeviceWatcher::UpdateHandler handler) {
  auto delegate = make_delegate<UpdateEvent>(
      [handler = std::move(handler)](abi::IDeviceWatcher*, abi::IDeviceInformationUpdate* update) -> HRESULT {
        check_present(update);
        HString id;
        check(update->get_Id(id.put()));
        handler({id.text()});
        return S_OK;
      });
  abi::EventRegistrationToken token{};
  check((watcher.get()->*subscribe)(delegate.get(), &token));
  return to_port(token);
}

}  // namespace

platform::EventToken WinrtDeviceWatcher::add_added(AddedHandler handler) {
  auto added = make_delegate<abi::ITypedEventHandler<abi::DeviceWatcher, abi::DeviceInformation>>(
      [handler = std::move(handler)](abi::IDeviceWatcher*, abi::IDeviceInformation* information) -> HRESULT {
        auto record = device_information_of(ComPtr<abi::IDeviceInformation>::copy_from(information));
        check_present(record);
        handler(*record);
        return S_OK;
      });
  abi::EventRegistrationToken token{};
  check(watcher_->add_Added(added.get(), &token));
  return to_port(token);
}

platform::EventToken WinrtDeviceWatcher::add_removed(UpdateHandler handler) {
  return add_update_handler(watcher_, &abi::IDeviceWatcher::add_Removed, std::move(handler));
}

platform::EventToken WinrtDeviceWatcher::add_updated(UpdateHandler handler) {
  return add_update_handler(watcher_, &abi::IDeviceWatcher::add_Updated, std::move(handler));
}

void WinrtDeviceWatcher::remove_added(platform::EventToken token) { check(watcher_->remove_Added(to_abi(token))); }

void WinrtDeviceWatcher::remove_removed(platform::EventToken token) { check(watcher_->remove_Removed(to_abi(token))); }

void WinrtDeviceWatcher::remove_updated(platform::EventToken token) { check(watcher_->remove_Updated(to_abi(token))); }

void WinrtDeviceWatcher::start() { check(watcher_->Start()); }

void WinrtDeviceWatcher::stop() { check(watcher_->Stop()); }

std::unique_ptr<platform::DeviceWatcher> create_source_group_watcher() {
  HString selector;
  check(activation_factory<abi::IMediaFrameSourceGroupStatics>(class_id::media_frame_source_group)
            ->GetDeviceSelector(selector.put()));
  ComPtr<abi::IDeviceWatcher> watcher;
  check(activation_factory<abi::IDeviceInformationStatics>(class_id::device_information)
            ->CreateWatcherAqsFilter(selector.get(), watcher.put()));
  check_present(watcher);
  return std::make_unique<WinrtDeviceWatcher>(std::move(watcher));
}

}  // namespace vexcap::windows
