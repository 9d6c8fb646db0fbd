// SPDX-License-Identifier: MIT
// Declared names and their numbers: a hash table with open addresses, as names are looked up by the million.
#ifndef KORU_MINIZINC_NAMES_H
#define KORU_MINIZINC_NAMES_H

#include <cstdint>
#include <string_view>
#include <vector>

namespace koru::fzn {

class Names {
 public:
  static constexpr std::uint32_t kUnknown = UINT32_MAX;

  Names() : slots_(1024) {}

  std::uint32_t find(std::string_view name) const { return slots_[place(name, hash(name))].number; }

  // False when it is there already.
  bool add(std::string_view name, std::uint32_t number) {
    const std::uint64_t h = hash(name);
    Slot &slot = slots_[place(name, h)];
    if (slot.number != kUnknown) return false;
    slot = {name, number, tagOf(h)};
    if (++count_ * 2 > slots_.size()) grow();
    return true;
  }

 private:
  struct Slot {
    std::string_view name;
    std::uint32_t number = kUnknown;
    std::uint32_t tag = 0;  // of the hash: names are compared only where it is the same
  };

  static std::uint32_t tagOf(std::uint64_t hash) { return static_cast<std::uint32_t>(hash >> 32); }

  static std::uint64_t hash(std::string_view name) {
    std::uint64_t h = 0xcbf29ce484222325U;  // Fowler, Noll, Vo
    for (const char c : name) h = (h ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    return h ^ (h >> 29);
  }

  std::size_t place(std::string_view name, std::uint64_t h) const {
    std::size_t i = static_cast<std::size_t>(h) & (slots_.size() - 1);
    while (slots_[i].number != kUnknown && (slots_[i].tag != tagOf(h) || slots_[i].name != name))
      i = (i + 1) & (slots_.size() - 1);
    return i;
  }

  void grow() {
    std::vector<Slot> old(slots_.size() * 2);
    old.swap(slots_);
    for (const Slot &slot : old) {
      if (slot.number != kUnknown) slots_[place(slot.name, hash(slot.name))] = slot;
    }
  }

  std::vector<Slot> slots_;
  std::size_t count_ = 0;
};

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_NAMES_H
