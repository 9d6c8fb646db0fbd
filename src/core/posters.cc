// SPDX-License-Identifier: MIT
#include "core/posters.h"

#include <algorithm>

#include "core/alloc.h"

namespace koru {

// Of a table with room.
int &Posters::firstOf(const Poster &poster) const {
  const auto name = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(poster.name));
  const auto caller = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(poster.caller));
  const auto hash = static_cast<int>((name * 31 + caller) * 0x9e3779b97f4a7c15 >> 32);
  return items_[hash & (room_ - 1)].first;
}

int Posters::find(const Poster &poster) {
  int number = room_ > 0 ? firstOf(poster) : kNone;
  while (number != kNone && items_[number].poster != poster) number = items_[number].next;
  if (number == kNone) number = add(poster);
  if (number == kNone) return kNone;
  lastName_ = poster.name;
  lastCaller_ = poster.caller;
  return last_ = number;
}

int Posters::add(const Poster &poster) {
  if (count_ == room_ && !grow()) return kNone;
  items_[count_].poster = poster;
  link(count_);
  return count_++;
}

void Posters::link(int number) {
  int &first = firstOf(items_[number].poster);
  items_[number].next = first;
  first = number;
}

// On exhausted memory code of the host may have been called, which may have posted: nothing is touched any more.
bool Posters::grow() {
  const int room = std::max(kFirstRoom, 2 * room_);
  auto *larger = static_cast<Item *>(allocateArray(0, static_cast<unsigned>(room), sizeof(Item)));
  if (larger == nullptr) return false;
  std::copy_n(items_, count_, larger);
  deallocate(items_);
  items_ = larger;
  room_ = room;
  for (int i = 0; i < room_; ++i) items_[i].first = kNone;
  for (int i = 0; i < count_; ++i) link(i);
  return true;
}

std::uint64_t Posters::bytes() const { return std::uint64_t{sizeof(Item)} * static_cast<unsigned>(room_); }

void Posters::destroy() {
  deallocate(items_);
  *this = Posters{};
}

}  // namespace koru
