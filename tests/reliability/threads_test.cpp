// Sample, interface and control threads at once.

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include "tests/support/plugin_host.h"

namespace {

using std::chrono::microseconds;

constexpr double kRateHz = 1024000.0;

/// Results with that many channels, 5 kHz apart.
std::string manyChannels(int count) {
  std::string text = "# survey.csv format 2\n";
  for (int i = 0; i < count; ++i) {
    text += std::to_string(100'000'000 + i * 5000) + ",5000,5000,5000,-20,-60,1,2,1,2,AM?\n";
  }
  return text;
}

/// Unlike in PluginHost, everything that threads share is atomic; clock, tune and files are slow.
struct SlowHost {
  std::atomic<int64_t> now_ms{1'000'000};
  std::atomic<double> wanted_hz{0.0};
  std::atomic<int> tunes{0};
  WendleHostApi services{};

  SlowHost() {
    services.ctx = this;
    services.now_ms = [](void* ctx) {
      std::this_thread::sleep_for(microseconds(50));
      return static_cast<SlowHost*>(ctx)->now_ms += 7;
    };
    services.tune = [](void* ctx, double hz) {
      auto* const host = static_cast<SlowHost*>(ctx);
      std::this_thread::sleep_for(microseconds(300));
      host->wanted_hz = hz;
      return ++host->tunes % 3 == 0 ? -4 : 0;
    };
  }
};

TEST(Threads, ShareThePluginWithoutHarm) {
  PluginHost host;
  SlowHost slow;
  host.dir.write("survey.cfg", "dwell_seconds=0.01\nstop=146e6\n");
  host.dir.write("survey.csv", manyChannels(2000));
  host.client->attach(&slow.services);
  host.create(kRateHz, 145e6);
  const Samples samples = band(4, {-100, 200});
  std::atomic<bool> stop{false};

  std::thread sample_thread([&] {
    for (int i = 0; i < 300; ++i) {
      host.process(samples);
      if (const double hz = slow.wanted_hz.exchange(0.0); hz != 0.0) {
        host.iq->retune(host.handle, hz);
      }
      std::this_thread::sleep_for(microseconds(100));
    }
    stop = true;
  });
  std::thread control_thread([&] {
    for (int i = 0; !stop; ++i) {
      std::this_thread::sleep_for(microseconds(2000));
      host.iq->retune(host.handle, 144e6 + 1e5 * (i % 20));
      if (i % 10 == 0) host.iq->destroy(host.handle);
      if (i % 20 == 0) host.iq->create(kRateHz, 145e6);
    }
  });
  std::thread interface_thread([&] {
    while (!stop) {
      const auto rows = host.rows(3000);
      ASSERT_GE(rows.size(), 2001U) << "half a survey was seen";
      EXPECT_EQ(rows[0][0], "Survey");
      for (const std::string& line : host.lines()) EXPECT_EQ(line.substr(0, 8), "survey: ");
      std::this_thread::sleep_for(microseconds(500));
    }
  });
  sample_thread.join();
  control_thread.join();
  interface_thread.join();

  EXPECT_GT(slow.tunes, 10);
  host.iq->destroy(host.handle);
  const auto remembered = host.rows(3000);
  host.create(kRateHz, 145e6);
  const auto resumed = host.rows(3000);
  EXPECT_GE(resumed.size(), 2002U) << "channels have been found";
  EXPECT_EQ(resumed.size(), remembered.size());
}

TEST(Threads, WaitForOneCallButNotWhereNoLockIsPromised) {
  struct Gate {
    PluginHost* plugin_host;
    int calls_left;  // until the call to the host that blocks
    std::promise<void> entered, leave;

    void pass() {
      if (--calls_left != 0) return;
      char titles[8][WENDLE_CELL_BYTES];
      // From inside the host, with the lock held: these would hang if they took it.
      EXPECT_EQ(plugin_host->panel->columns(plugin_host->panel->create(), titles), 7);
      plugin_host->panel->destroy(plugin_host->handle);
      EXPECT_NE(plugin_host->query(WENDLE_ABI_VERSION), nullptr);
      entered.set_value();
      leave.get_future().wait();
    }
  };
  for (const int blocking_call : {1, 2, 3}) {  // clock, clock for the detections, tune
    PluginHost host;
    host.create(kRateHz, 145e6);
    Gate gate{&host, blocking_call, {}, {}};
    host.services.ctx = &gate;
    host.services.now_ms = [](void* ctx) {
      static_cast<Gate*>(ctx)->pass();
      return static_cast<Gate*>(ctx)->plugin_host->now_ms;
    };
    host.services.tune = [](void* ctx, double) {
      static_cast<Gate*>(ctx)->pass();
      return 0;
    };
    const Samples samples = band(1, {100});
    host.now_ms += 20'000;
    auto process = std::async(std::launch::async, [&] { host.process(samples); });
    gate.entered.get_future().wait();
    auto poll = std::async(std::launch::async, [&] { return host.rows(); });
    EXPECT_EQ(poll.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    gate.leave.set_value();
    EXPECT_EQ(poll.get()[0][4], "1") << "the whole dwell is seen";
    process.get();
  }
}

}  // namespace
