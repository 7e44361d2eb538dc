// The request thread off Windows: a thread with a synchronous mailbox. It keeps the window's
// semantics: one request runs at a time, each sender blocks until its handler returns, a send
// from the request thread runs directly, and the exit request can be posted.
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

#include "api/messages.h"
#include "api/request_transport.h"
#include "log/log.h"

namespace vexcap::api {

namespace {

// What a failed post to a window that is gone reports on Windows.
constexpr unsigned long kErrorInvalidWindowHandle = 1400;

// Everything the thread touches; shared with the thread so that an abandoned thread never
// outlives what it uses.
struct Mailbox {
  enum class State { Starting, Running, Quitting, Ended };

  struct Request {
    std::uint32_t message;
    std::uintptr_t wparam;
    std::intptr_t lparam;
    bool done;
  };

  explicit Mailbox(RequestHandlerFactory factory) : make_handler(std::move(factory)) {}

  RequestHandlerFactory make_handler;
  std::thread::id request_thread_id;
  RequestHandler* handler = nullptr;  // owned by the request thread

  std::mutex mutex;  // guards state, queue, posted_exit and every Request::done
  std::condition_variable changed;
  State state = State::Starting;
  std::deque<Request*> queue;
  Request posted_exit{};
};

// Runs on the request thread. The exit request ends the loop, as destroying the window does.
void run_request(Mailbox& mailbox, std::uint32_t message, std::uintptr_t wparam,
                 std::intptr_t lparam) {
  if (!is_request_message(message)) return;
  if (mailbox.handler->dispatch(message, wparam, lparam)) {
    std::lock_guard<std::mutex> lock(mailbox.mutex);
    mailbox.state = Mailbox::State::Quitting;
  }
}

void run_request_loop(const std::shared_ptr<Mailbox>& shared) {
  Mailbox& mailbox = *shared;
  std::unique_ptr<RequestHandler> handler = mailbox.make_handler();
  {
    std::lock_guard<std::mutex> lock(mailbox.mutex);
    mailbox.handler = handler.get();
    mailbox.request_thread_id = std::this_thread::get_id();
    mailbox.state = Mailbox::State::Running;
  }
  mailbox.changed.notify_all();

  std::unique_lock<std::mutex> lock(mailbox.mutex);
  while (mailbox.state == Mailbox::State::Running) {
    mailbox.changed.wait(lock, [&] { return !mailbox.queue.empty(); });
    Mailbox::Request* request = mailbox.queue.front();
    mailbox.queue.pop_front();
    lock.unlock();
    run_request(mailbox, request->message, request->wparam, request->lparam);
    lock.lock();
    request->done = true;
    mailbox.changed.notify_all();
  }
  // Senders queued behind the exit find the window gone.
  for (Mailbox::Request* request : mailbox.queue) request->done = true;
  mailbox.queue.clear();
  mailbox.handler = nullptr;
  lock.unlock();
  handler.reset();  // on the request thread, before the thread counts as ended
  lock.lock();
  mailbox.state = Mailbox::State::Ended;
  mailbox.changed.notify_all();
}

class PosixRequestThread final : public RequestTransport {
 public:
  explicit PosixRequestThread(RequestHandlerFactory make_handler)
      : mailbox_(std::make_shared<Mailbox>(std::move(make_handler))) {}
  ~PosixRequestThread() override { stop(); }

  bool start() {
    try {
      thread_ = std::thread([mailbox = mailbox_] { run_request_loop(mailbox); });
    } catch (const std::system_error& error) {
      VXLOG('E', "Failed creating device client thread: %d", error.code().value());
      return false;
    }
    std::unique_lock<std::mutex> lock(mailbox_->mutex);
    mailbox_->changed.wait(lock, [this] { return mailbox_->state != Mailbox::State::Starting; });
    return true;
  }

  void send(std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam) override {
    Mailbox& mailbox = *mailbox_;
    if (std::this_thread::get_id() == mailbox.request_thread_id) {
      run_request(mailbox, message, wparam, lparam);
      return;
    }
    Mailbox::Request request{message, wparam, lparam, false};
    std::unique_lock<std::mutex> lock(mailbox.mutex);
    if (mailbox.state != Mailbox::State::Running) return;  // like a send to a destroyed window
    mailbox.queue.push_back(&request);
    mailbox.changed.notify_all();
    mailbox.changed.wait(lock, [&] { return request.done; });
  }

  void stop() override {
    if (!thread_.joinable()) return;
    if (!post_exit()) {
      VXLOG('W', "Failed posting exit message to the window thread: %lu",
            static_cast<unsigned>(kErrorInvalidWindowHandle));
    }
    std::unique_lock<std::mutex> lock(mailbox_->mutex);
    const bool ended = mailbox_->changed.wait_for(
        lock, std::chrono::milliseconds(kRequestThreadStopTimeoutMs),
        [this] { return mailbox_->state == Mailbox::State::Ended; });
    lock.unlock();
    if (ended) {
      thread_.join();
    } else {
      VXLOG('W', "Time out waiting for thread to close!");
      thread_.detach();  // abandoned, never killed; it keeps the mailbox alive
    }
  }

 private:
  bool post_exit() {
    std::lock_guard<std::mutex> lock(mailbox_->mutex);
    if (mailbox_->state != Mailbox::State::Running) return false;
    mailbox_->posted_exit = Mailbox::Request{kMsgExit, 0, 0, false};
    mailbox_->queue.push_back(&mailbox_->posted_exit);
    mailbox_->changed.notify_all();
    return true;
  }

  std::shared_ptr<Mailbox> mailbox_;
  std::thread thread_;
};

}  // namespace

// The mailbox has no messages besides its requests.
void answer_sent_messages() {}

std::unique_ptr<RequestTransport> start_request_thread(RequestHandlerFactory make_handler) {
  auto thread = std::make_unique<PosixRequestThread>(std::move(make_handler));
  if (!thread->start()) return nullptr;
  return thread;
}

}  // namespace vexcap::api
