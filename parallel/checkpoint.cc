// SPDX-License-Identifier: MIT
#include "parallel/checkpoint.h"

#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>

#include "parallel/piece.h"

namespace koru::parallel {

namespace {

constexpr char kTitle[] = "koru_mpi checkpoint 2\n";

struct Closer {
  void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Closer>;

std::string checkOf(const std::string &bytes) {
  std::uint64_t h = 0x9e3779b97f4a7c15ULL;
  for (const char byte : bytes) {
    h = (h ^ static_cast<unsigned char>(byte)) * 0xbf58476d1ce4e5b9ULL;
    h ^= h >> 31;
  }
  std::string check;
  for (int i = 0; i < 8; ++i) check.push_back(static_cast<char>(h >> 8 * i));
  return check;
}

std::string bytesOf(const Checkpoint &checkpoint) {
  Writer out;
  out.number(checkpoint.search);
  const std::string bytes = kTitle + out.bytes + checkpoint.state;
  return bytes + checkOf(bytes);
}

bool systemError(std::string &why) {
  why = std::strerror(errno);
  return false;
}

bool readAll(std::FILE *file, std::string &bytes) {
  char some[1 << 16];
  while (const std::size_t n = std::fread(some, 1, sizeof some, file)) bytes.append(some, n);
  return std::ferror(file) == 0;
}

bool isWhole(const std::string &bytes) {
  const std::size_t title = sizeof kTitle - 1;
  if (bytes.size() < title + 9 || bytes.compare(0, title, kTitle) != 0) return false;
  const std::size_t end = bytes.size() - 8;
  return checkOf(bytes.substr(0, end)) == bytes.substr(end);
}

bool writeAll(const std::string &path, const std::string &bytes) {
  const File file(std::fopen(path.c_str(), "wb"));
  return file && std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size() &&
         std::fflush(file.get()) == 0 && fsync(fileno(file.get())) == 0;
}

}  // namespace

bool readCheckpoint(const std::string &path, Checkpoint &checkpoint, std::string &why) {
  checkpoint = {};
  const File file(std::fopen(path.c_str(), "rb"));
  if (!file) return errno == ENOENT || systemError(why);
  std::string bytes;
  if (!readAll(file.get(), bytes)) return systemError(why);
  if (!isWhole(bytes)) {
    why = "it is cut off, damaged, or no checkpoint";
    return false;
  }
  bytes.resize(bytes.size() - 8);
  Reader in(bytes, sizeof kTitle - 1);
  checkpoint.search = in.number();
  checkpoint.state = bytes.substr(sizeof kTitle - 1 + Writer::lengthOf(checkpoint.search));
  return true;
}

bool writeCheckpoint(const std::string &path, const Checkpoint &checkpoint, std::string &why) {
  const std::string fresh = path + ".new";
  if (writeAll(fresh, bytesOf(checkpoint)) && std::rename(fresh.c_str(), path.c_str()) == 0) return true;
  return systemError(why);
}

}  // namespace koru::parallel
