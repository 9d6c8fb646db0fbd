// SPDX-License-Identifier: MIT
// The bytes of a recorded search, one after the other into a file; what they mean is in docs/search-trees.md.
#pragma once

#include <cstdint>
#include <cstdio>

namespace koru::record {

// The first byte of each item that is no decision and no level.
enum Code : std::uint8_t {
  kDecision = 0,   // and 0..63: refused
  kAccepted = 64,  // and 0..63
  kLevel = 128,    // and 0..63
  kLeave = 192,    // 1 to 8 levels, 192..199
  kSolution = 200,
  kRejected = 201,
  kSolutionWorth = 202,  // the objective follows
  kBegin = 203,
  kEnd = 204,
  kRun = 205,
  kMethod = 206,  // and the method of the next decision, 206..211
  kOpposite = 212,
  kBy = 213,
  kPlace = 214,
  kName = 215,
  kTime = 216
};

inline constexpr char kMagic[] = "koru-tree 1\n";
inline constexpr int kSmall = 63;  // what a first byte has no room for follows it
inline constexpr int kMostLeaves = 8;

inline std::uint64_t zigzag(std::int64_t v) {
  const std::uint64_t twice = static_cast<std::uint64_t>(v) << 1;
  return v < 0 ? ~twice : twice;
}

class Stream {
 public:
  Stream() = default;
  Stream(const Stream &) = delete;
  Stream &operator=(const Stream &) = delete;
  ~Stream() { close(); }

  bool open(const char *path);  // false when the file cannot be made
  void close();
  bool isOpen() const { return file_ != nullptr; }
  void flush() const { std::fflush(file_); }

  void byte(int b) const { std::fputc(b, file_); }
  void number(std::uint64_t n) const;  // seven bits a byte, the lowest first
  void small(int code, std::uint64_t n) const;
  void text(const char *text) const;

 private:
  std::FILE *file_ = nullptr;
};

}  // namespace koru::record
