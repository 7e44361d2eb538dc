// The request thread off Windows: a thread with a synchronous mailbox. It keeps the window's
// semantics: one request runs at a time, each sender blocks until its handler returns, a send
// from the request thread runs directly, and the exit request can be posted.
#include <algorithm>
#include <atomic>
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

// A thread put to sleep on a futex is woken through the scheduler, and on a virtual machine
// through the hypervisor: each wake-up measured 15-20 us, two per request. Both sides watch
// for their answer a little while before they sleep: a request's handler is usually done
// within it, and a host's next request usually comes within it, so a run of requests passes
// between two awake threads (under a microsecond each). On a loaded machine the other thread
// may not be running at all, and a watch only takes the processor from it: a side whose watch
// came to nothing sleeps at once for its next waits, twice as many after each further miss.
class Watch {
 public:
  template <class Ready>
  bool for_a_while(Ready ready) {
    const unsigned skipped = skip_.load(std::memory_order_relaxed);
    if (skipped != 0) {
      skip_.store(skipped - 1, std::memory_order_relaxed);
      return ready();
    }
    if (spin(ready)) {
      backoff_.store(0, std::memory_order_relaxed);
      return true;
    }
    const unsigned backoff = std::min(2 * backoff_.load(std::memory_order_relaxed) + 1, kMaxBackoff);
    backoff_.store(backoff, std::memory_order_relaxed);
    skip_.store(backoff, std::memory_order_relaxed);
    return false;
  }

 private:
  static constexpr auto kLength = std::chrono::microseconds(30);
  static constexpr unsigned kMaxBackoff = 63;

  template <class Ready>
  static bool spin(Ready ready) {
    const auto until = std::chrono::steady_clock::now() + kLength;
    for (;;) {
      for (int i = 0; i < 64; ++i) {
        if (ready()) return true;
#if defined(__x86_64__) || defined(__i386__)
        __builtin_ia32_pause();
#endif
      }
      if (std::chrono::steady_clock::now() >= until) return ready();
    }
  }

  // Heuristics only: senders on several threads may race on them harmlessly.
  std::atomic<unsigned> skip_{0};
  std::atomic<unsigned> backoff_{0};
};

// Everything the thread touches; shared with the thread so that an abandoned thread never
// outlives what it uses.
struct Mailbox {
  enum class State { Starting, Running, Quitting, Ended };

  struct Request {
    std::uint32_t message;
    std::uintptr_t wparam;
    std::intptr_t lparam;
    // Set under the mutex (the sender may sleep on `answered`), read without it while watched.
    std::atomic<bool> done{false};
  };

  explicit Mailbox(RequestHandlerFactory factory) : make_handler(std::move(factory)) {}

  RequestHandlerFactory make_handler;
  std::thread::id request_thread_id;
  RequestHandler* handler = nullptr;  // owned by the request thread

  std::mutex mutex;  // guards state, queue and posted_exit, and orders every Request::done
  std::condition_variable changed;   // state
  std::condition_variable queued;    // queue
  std::condition_variable answered;  // Request::done
  State state = State::Starting;
  std::deque<Request*> queue;
  std::atomic<std::size_t> queue_length{0};  // the queue's size, for watching without the mutex
  Watch request_watch;  // the request thread's, for the next request
  Watch answer_watch;   // the senders', for their answers
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
    if (mailbox.queue.empty()) {
      lock.unlock();
      mailbox.request_watch.for_a_while(
          [&] { return mailbox.queue_length.load(std::memory_order_acquire) != 0; });
      lock.lock();
      mailbox.queued.wait(lock, [&] { return !mailbox.queue.empty(); });
    }
    Mailbox::Request* request = mailbox.queue.front();
    mailbox.queue.pop_front();
    mailbox.queue_length.store(mailbox.queue.size(), std::memory_order_relaxed);
    lock.unlock();
    run_request(mailbox, request->message, request->wparam, request->lparam);
    lock.lock();
    // The sender may return as soon as it sees this: the request is not touched again.
    request->done.store(true, std::memory_order_release);
    lock.unlock();
    mailbox.answered.notify_all();
    lock.lock();
  }
  // Senders queued behind the exit find the window gone.
  for (Mailbox::Request* request : mailbox.queue) request->done.store(true, std::memory_order_release);
  mailbox.queue.clear();
  mailbox.queue_length.store(0, std::memory_order_relaxed);
  mailbox.answered.notify_all();
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
    Mailbox::Request request{message, wparam, lparam};
    std::unique_lock<std::mutex> lock(mailbox.mutex);
    if (mailbox.state != Mailbox::State::Running) return;  // like a send to a destroyed window
    mailbox.queue.push_back(&request);
    mailbox.queue_length.store(mailbox.queue.size(), std::memory_order_release);
    // Woken outside the lock: a thread woken into a held mutex sleeps again at once.
    lock.unlock();
    mailbox.queued.notify_one();
    const auto answered = [&] { return request.done.load(std::memory_order_acquire); };
    if (mailbox.answer_watch.for_a_while(answered)) return;
    lock.lock();
    mailbox.answered.wait(lock, answered);
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
    Mailbox::Request& exit = mailbox_->posted_exit;
    exit.message = kMsgExit, exit.wparam = 0, exit.lparam = 0;
    exit.done.store(false, std::memory_order_relaxed);
    mailbox_->queue.push_back(&exit);
    mailbox_->queue_length.store(mailbox_->queue.size(), std::memory_order_release);
    mailbox_->queued.notify_one();
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
