// Measures what the survey sees and draws it: one chart or a few for each question.
#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <exception>
#include <string_view>

#include "curves/measurements.h"

int main(int argc, char** argv) {
  using namespace pelagrim_curves;
  struct Measurement {
    std::string_view name;
    void (*measure)(const std::filesystem::path& dir);
  };
  constexpr Measurement kMeasurements[] = {
      {"levels", measureLevels}, {"duty", measureDutyCycles},   {"alarms", measureFalseAlarms},
      {"bursts", measureBursts}, {"accuracy", measureAccuracy}, {"carriers", measureCarriers},
      {"kinds", measureKinds},   {"short", measureShortDwells}, {"full", measureFullBands}};
  if (argc < 2 || argc > 3) {
    fmt::print(stderr, "usage: measure_curves DIR [MEASUREMENT]\n");
    return 2;
  }
  const std::string_view wanted = argc == 3 ? argv[2] : "";
  bool known = wanted.empty();
  try {
    for (const auto& [name, measure] : kMeasurements) {
      if (!wanted.empty() && wanted != name) continue;
      known = true;
      const auto start = std::chrono::steady_clock::now();
      measure(argv[1]);
      const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
      fmt::print("{:9} {:6.1f} s\n", name, taken.count());
      std::fflush(stdout);
    }
  } catch (const std::exception& failure) {
    fmt::print(stderr, "measure_curves: {}\n", failure.what());
    return 1;
  }
  if (!known) {
    fmt::print(stderr, "measure_curves: no measurement is called {}\n", wanted);
    return 2;
  }
  return 0;
}
