// The handlers of one platform event, by token, as an event source keeps its delegates: add
// answers a new token, remove forgets one, and the handlers to call are copied out so that
// they run outside the owner's lock. The owner's lock guards the table and its token counter.
#pragma once

#include <map>
#include <utility>
#include <vector>

#include "platform/port.h"

namespace vexcap::virtual_camera {

// Tokens shared by the tables of one event source, so no two of its handlers share one.
struct TokenCounter {
  platform::EventToken next = 1;
};

template <typename Handler>
class HandlerTable {
 public:
  platform::EventToken add(TokenCounter& tokens, Handler handler) {
    const platform::EventToken token = tokens.next++;
    handlers_.emplace(token, std::move(handler));
    return token;
  }
  void remove(platform::EventToken token) { handlers_.erase(token); }
  void clear() { handlers_.clear(); }
  std::vector<std::pair<platform::EventToken, Handler>> with_tokens() const {
    return {handlers_.begin(), handlers_.end()};
  }
  std::vector<Handler> handlers() const {
    std::vector<Handler> all;
    for (const auto& [token, handler] : handlers_) all.push_back(handler);
    return all;
  }

 private:
  std::map<platform::EventToken, Handler> handlers_;
};

}  // namespace vexcap::virtual_camera
