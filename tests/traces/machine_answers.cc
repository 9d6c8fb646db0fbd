// SPDX-License-Identifier: MIT
// What calls answer: kept under the line's number, and told in the transcript.
#include "traces/blocks.h"
#include "traces/machine.h"
#include "traces/show.h"

namespace koru::traces {

template <class T>
void Machine::keep(std::array<T *, kReferences> &all, const Line &line, T *what) {
  answer_ = what != nullptr ? 1 : 0;
  if (line.target != kNull) all[static_cast<std::size_t>(line.target)] = what;
  say(what != nullptr ? "  made" : "  null");
}

void Machine::answer(const Line &, int number) {
  answer_ = number;
  say("  " + std::to_string(number));
}

void Machine::answer(const Line &, const char *text) {
  answer_ = text != nullptr ? 1 : 0;
  say(text != nullptr ? "  \"" + std::string(text) + "\"" : "  null");
}

void Machine::answer(const Line &line, CSint *v) {
  keep(world_.variables, line, v);
  if (line.target != kNull) world_.shown.erase(line.target);
}

void Machine::answer(const Line &line, CSint **array) {
  answer_ = array != nullptr ? 1 : 0;
  for (int i = 0; array != nullptr && line.target != kNull && i < line.args[0].number; ++i)
    if (line.target + i < kReferences) world_.variables[static_cast<std::size_t>(line.target + i)] = array[i];
  say(array != nullptr ? "  made" : "  null");
}

void Machine::answer(const Line &line, int *domain) {
  answer_ = domain != nullptr ? 1 : 0;
  std::string text;
  const int count = domain != nullptr ? cs_getNbElements(variable(line.args[0].number)) : 0;
  for (int i = 0; i < count; ++i) text += " " + std::to_string(domain[i]);
  say("  domain" + text);
  cs_freeDomain(domain);
}

// Selectors and hooks belong to the host: what a number stood for before is freed first, unless it is in use.
void Machine::answer(const Line &line, CSvalueSelector *selector) {
  if (line.target == kNull) {
    cs_freeValueSelector(selector);
  } else {
    spareSelectors_.push_back(this->selector(line.target));
  }
  keep(selectors_, line, line.target == kNull ? nullptr : selector);
}

void Machine::answer(const Line &line, CSsearchNotify *record) {
  if (line.row->result != 'h') return;  // setters hand back what they got
  if (line.target == kNull) {
    cs_freeSearchNotify(record);
  } else {
    spareHooks_.push_back(hooks(line.target));
  }
  keep(hooks_, line, line.target == kNull ? nullptr : record);
}

void Machine::answer(const Line &line, CSnoGoodSet *set) { keep(world_.sets, line, set); }
void Machine::answer(const Line &line, CSprofiler *profiler) { keep(world_.profilers, line, profiler); }

// Deliberately, deleting a profiler does not give its memory back.
void Machine::deleteProfiler(int number) {
  cs_deleteProfiler(profiler(number));
  if (profiler(number) != nullptr) deletedProfilers_.insert(profiler(number));
}

CSint **Machine::array(const std::vector<int> &references) {
  std::vector<CSint *> &result = world_.kept.variables.emplace_back();
  for (const int number : references) result.push_back(variable(number));
  result.push_back(nullptr);
  return result.data();
}

CSvalueSelector **Machine::selectorArray(const std::vector<int> &references) {
  std::vector<CSvalueSelector *> &result = world_.kept.selectors.emplace_back();
  for (const int number : references) result.push_back(selector(number));
  result.push_back(nullptr);
  return result.data();
}

// ----- the transcript

std::FILE *Machine::scratch() {
  std::array<char, 4096> &text = scratchText_[static_cast<std::size_t>(scriptDepth_)];
  if (scratch_ == nullptr) scratch_ = fmemopen(text.data(), text.size(), "w");
  return scratch_;
}

void Machine::sayScratch(const Line &line) {
  if (scratch_ == nullptr) return;
  std::fclose(std::exchange(scratch_, nullptr));
  std::array<char, 4096> &text = scratchText_[static_cast<std::size_t>(scriptDepth_)];
  text.back() = '\0';
  if (line.row->group == Group::kOutput) say("  " + std::string(text.data()));
}

void Machine::say(const std::string &text) {
  if (settings_.transcript) std::printf("%*s%s\n", 2 * scriptDepth_, "", text.c_str());
}

// Domains that are not what they were when they were told last.
void Machine::sayChanges() {
  for (int i = 0; i < kReferences; ++i) {
    if (variable(i) == nullptr) continue;
    std::string text = show(variable(i));
    std::string &known = world_.shown[i];
    if (known != text) say("  v" + std::to_string(i) + " " + text);
    known = std::move(text);
  }
}

}  // namespace koru::traces
