#include "progress_line.h"

#include <cstdio>
#ifdef _WIN32
#include <io.h>
#define isatty _isatty
#else
#include <unistd.h>
#endif

namespace vexcap::tool {
namespace {

constexpr auto kRedrawPeriod = std::chrono::milliseconds(250);

}  // namespace

bool standard_error_is_terminal() { return isatty(2) != 0; }

ProgressLine::ProgressLine(bool wanted) : shown_(wanted && standard_error_is_terminal()) {}

ProgressLine::~ProgressLine() {
  if (drawn_) std::fprintf(stderr, "\r\033[K");
}

bool ProgressLine::due() const {
  return shown_ && (!drawn_ || std::chrono::steady_clock::now() - last_draw_ >= kRedrawPeriod);
}

void ProgressLine::show(std::uint64_t frames, std::uint64_t wanted, double fps, std::uint64_t dropped,
                        std::uint64_t bytes) {
  last_draw_ = std::chrono::steady_clock::now();
  drawn_ = true;
  char total[32] = "";
  if (wanted != 0) std::snprintf(total, sizeof total, "/%llu", static_cast<unsigned long long>(wanted));
  std::fprintf(stderr, "\r\033[Kframes %llu%s  %.1f fps  drops %llu  %.1f MB",
               static_cast<unsigned long long>(frames), total, fps,
               static_cast<unsigned long long>(dropped), static_cast<double>(bytes) / 1e6);
  std::fflush(stderr);
}

}  // namespace vexcap::tool
