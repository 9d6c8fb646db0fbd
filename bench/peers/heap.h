// SPDX-License-Identifier: MIT
// The most heap memory that a run has had at a time, in bytes as malloc rounds them.
#pragma once

namespace koru::bench {

// From its making to its end; one at a time.
class PeakHeap {
 public:
  PeakHeap();
  PeakHeap(const PeakHeap &) = delete;
  PeakHeap &operator=(const PeakHeap &) = delete;
  ~PeakHeap();

  long long bytes() const;
};

}  // namespace koru::bench
