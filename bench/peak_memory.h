// Peak resident memory of this process, for the benchmarks' counters.
#pragma once

#include <sys/resource.h>

inline double peakRssMb() {
  rusage u{};
  getrusage(RUSAGE_SELF, &u);
  return static_cast<double>(u.ru_maxrss) / 1024.0;  // Linux gives kilobytes
}
