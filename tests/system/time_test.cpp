// Sleep, tick count and timezone offsets. nanosleep and times are replaced in this program: on
// the thread that arms them they record each call and play a script, elsewhere they pass through.
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <deque>
#include <string>
#include <thread>
#include <vector>

#include <dlfcn.h>
#include <pthread.h>
#include <sched.h>
#include <sys/times.h>

#include "tessera/system.h"
#include "tests/system/os_test_support.h"

namespace {

struct SleepCall {
  timespec request;
  timespec left;        // the remainder after the call
  bool same_structure;  // request and remainder were one structure
  int error;            // errno of a failed call, else 0
};

// Per call: an errno to fail with (writing a remainder of 123456 ns), 0 to succeed at once, or
// -1 to really sleep.
thread_local bool t_armed = false;
thread_local std::deque<int> t_sleep_script;
thread_local std::deque<clock_t> t_times_script;
thread_local std::vector<SleepCall> t_sleeps;

template <class Function>
Function *next_definition(const char *name) {
  return reinterpret_cast<Function *>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" int nanosleep(const timespec *request, timespec *remaining) {
  static auto *const real = next_definition<int(const timespec *, timespec *)>("nanosleep");
  if (!t_armed) {
    return real(request, remaining);
  }
  SleepCall call{.request = *request, .left = {}, .same_structure = request == remaining};
  int result = 0;
  const int scripted = t_sleep_script.empty() ? -1 : t_sleep_script.front();
  if (!t_sleep_script.empty()) {
    t_sleep_script.pop_front();
  }
  if (scripted > 0) {
    *remaining = timespec{0, 123456};
    errno = scripted;
    result = -1;
  } else if (scripted < 0) {
    result = real(request, remaining);
  }
  call.error = result == -1 ? errno : 0;
  call.left = *remaining;
  t_sleeps.push_back(call);
  return result;
}

extern "C" clock_t times(tms *buffer) {
  static auto *const real = next_definition<clock_t(tms *)>("times");
  if (!t_armed || t_times_script.empty()) {
    return real(buffer);
  }
  const clock_t ticks = t_times_script.front();
  t_times_script.pop_front();
  if (ticks == static_cast<clock_t>(-1)) {
    errno = EFAULT;
  }
  return ticks;
}

namespace tessera::test {
namespace {

class Scripted : public ::testing::Test {
 protected:
  void SetUp() override {
    t_armed = true;
    t_sleeps.clear();
  }
  void TearDown() override {
    t_armed = false;
    t_sleep_script.clear();
    t_times_script.clear();
  }
};

using Sleep = Scripted;

// Retries with what was left are shown by the storm below.
TEST_F(Sleep, SplitsMillisecondsAndEndsAtAnErrorOtherThanEintr) {
  t_sleep_script = {EINVAL};
  OSSleep(4294967295U);
  ASSERT_EQ(t_sleeps.size(), 1U);
  EXPECT_EQ(t_sleeps[0].request.tv_sec, 4294967);
  EXPECT_EQ(t_sleeps[0].request.tv_nsec, 295000000);
}

void ignore_signal(int /*signal*/) {}

// Ten retries after the first call, each asking for what the interrupted call left.
TEST_F(Sleep, EndsShortUnderAStormOfSignalsFromAnotherThread) {
  struct sigaction action {};
  struct sigaction previous {};
  action.sa_handler = ignore_signal;  // no SA_RESTART: each signal breaks the sleep off
  sigemptyset(&action.sa_mask);
  ASSERT_EQ(sigaction(SIGUSR1, &action, &previous), 0);
  std::atomic<bool> done{false};
  const pthread_t sleeper = pthread_self();
  std::thread storm([&] {
    while (!done.load()) {
      pthread_kill(sleeper, SIGUSR1);
      sched_yield();
    }
  });
  OSSleep(3600U * 1000U);  // an hour, unless the storm ends it
  done = true;
  storm.join();
  sigaction(SIGUSR1, &previous, nullptr);

  ASSERT_EQ(t_sleeps.size(), 11U);
  EXPECT_EQ(t_sleeps[0].request.tv_sec, 3600);
  for (std::size_t i = 0; i < t_sleeps.size(); ++i) {
    EXPECT_EQ(t_sleeps[i].error, EINTR) << i;
    EXPECT_TRUE(t_sleeps[i].same_structure);
    if (i > 0) {  // each retry asks for what the interrupted call left
      EXPECT_EQ(t_sleeps[i].request.tv_sec, t_sleeps[i - 1].left.tv_sec);
      EXPECT_EQ(t_sleeps[i].request.tv_nsec, t_sleeps[i - 1].left.tv_nsec);
    }
  }
}

using TickCount = Scripted;

TEST_F(TickCount, IsTenTimesTheTicksModulo2To32WithTheTwoPerrorLines) {
  struct Case {
    std::deque<clock_t> ticks;
    uint32_t expected;
    std::string errors;
  };
  const auto failed = static_cast<clock_t>(-1);
  const Case cases[] = {
      {{429496729}, 4294967290U, ""},
      {{429496730}, 4, ""},  // 4294967300 wraps
      {{failed, 77}, 770, "times:failed:: Bad address\n"},
      {{failed, failed}, 0xFFFFFFF6U, "times:failed:: Bad address\nTimes Failed:: Bad address\n"},
  };
  for (const auto &c : cases) {
    t_times_script = c.ticks;
    const CaptureFd errors(STDERR_FILENO);
    EXPECT_EQ(GetTickCount(), c.expected) << c.ticks.front();
    EXPECT_EQ(errors.text(), c.errors);
    EXPECT_TRUE(t_times_script.empty());
  }
  t_times_script = {5};
  EXPECT_EQ(OSGetTickCount(), 50U);
}

TEST_F(TickCount, TimeDiffKeepsTheWrapRule) {
  struct Case {
    clock_t ticks;  // now = ticks * 10 modulo 2^32
    uint32_t earlier;
    uint32_t expected;
  };
  const Case cases[] = {
      {100, 1000, 0},
      {100, 400, 600},
      {100, 0, 1000},
      {1717986920, 0xFFFFFFF0U, 0x1F},  // now is 0x10: one less than the true 0x20
      {0, 1, 0xFFFFFFFEU},
  };
  for (const auto &c : cases) {
    t_times_script = {c.ticks};
    EXPECT_EQ(OSGetTimeDiff(c.earlier), c.expected) << c.earlier;
  }
}

// Each test sets TZ; none is set in this program otherwise.
class Timezone : public ::testing::Test {
 protected:
  void TearDown() override {
    unsetenv("TZ");
    tzset();
  }
  static void zone(const char *tz, bool apply = true) {
    setenv("TZ", tz, 1);
    if (apply) {
      tzset();
    }
  }
};

// Each reading starts from UTC, where the offset is 0 and the library reads the zone itself;
// once the offset is not 0 it reads it no more.
TEST_F(Timezone, OffsetsFollowTheSystemZoneReadAgainWhileTheOffsetIsZero) {
  struct Case {
    const char *tz;
    int32_t offset;
    int32_t daylight;
  };
  const Case cases[] = {
      {"UTC0", 0, 0},
      {"EST5", -300, 0},
      {"EST5EDT,M3.2.0,M11.1.0", -300, 60},
      {"CET-1CEST,M3.5.0,M10.5.0/3", 60, 60},
      {"IST-5:30", 330, 0},
      {"GMT0BST,M3.5.0/1,M10.5.0", 0, 60},
      {"ABC0:01:30", -1, 0},  // 90 s west: rounded toward zero
      {"ABC-0:00:45", 0, 0},  // 45 s east
      {"NZST-12NZDT,M9.5.0,M4.1.0/3", 720, 60},
  };
  for (const auto &c : cases) {
    zone("UTC0");
    zone(c.tz, false);
    EXPECT_EQ(OSGetTimezoneOffset(), c.offset) << c.tz;
    zone("UTC0");
    zone(c.tz, false);
    EXPECT_EQ(OSGetDaylightOffset(), c.daylight) << c.tz;
  }
  zone("EST5", false);
  EXPECT_EQ(OSGetTimezoneOffset(), 720);
  EXPECT_EQ(OSGetDaylightOffset(), 60);
}

}  // namespace
}  // namespace tessera::test
