// SPDX-License-Identifier: MIT
#include "minizinc/profiling.h"

#include <algorithm>

namespace koru::fzn {

Profiling::Profiling(const Syntax &syntax, const Model &model, const std::string &file)
    : syntax_(syntax), model_(model), file_(file) {
  if (file.empty()) return;
  cs_setProfilerLocator("file line address function", locate, this);
  profiler_ = cs_createProfiler(0);
  cs_enableProfiler(profiler_);
}

void Profiling::write() const {
  if (profiler_ == nullptr) return;
  cs_disableProfiler(profiler_);
  cs_profilerWriteFile(profiler_, file_.c_str());
}

const char *Profiling::locate(void *self) {
  auto &profiling = *static_cast<Profiling *>(self);
  const Constraint *c = profiling.model_.current();
  if (c == nullptr) return "(search)\t0\t0\t(search)";
  const Syntax &s = profiling.syntax_;
  const Expr *path = s.find(c->annotations, "mzn_path");
  if (path != nullptr && path->kind == Kind::kCall && path->part.count == 1 &&
      s.list(path->part)[0].kind == Kind::kString) {
    profiling.place_ = placeOf(s.string(s.list(path->part)[0]));
  } else {
    const auto line = 1 + std::count(s.text.begin(), s.text.begin() + c->at, '\n');
    profiling.place_ = s.file + "\t" + std::to_string(line) + "\t0\t" + std::string(s.name(c->at));
  }
  return profiling.place_.c_str();
}

namespace {

struct Step {
  std::string_view file, line, what;
};

// "FILE|LINE|COLUMN|LINE|COLUMN|KIND|NAME"; a loop has "i=2" for the kind, and some kinds have no name.
Step stepOf(std::string_view text) {
  std::string_view fields[7];
  std::size_t n = 0;
  while (n < 7) {
    const std::size_t bar = text.find('|');
    fields[n++] = text.substr(0, bar);
    if (bar == text.npos) break;
    text.remove_prefix(bar + 1);
  }
  if (n < 6) return {{}, {}, fields[0]};
  return {fields[0], fields[1], n == 7 ? fields[6] : fields[5]};
}

// "\\8@alldifferent", an overloaded form, is alldifferent to the reader; operators are without quotes.
std::string_view plain(std::string_view name) {
  if (name.starts_with('\\') && name.find('@') != name.npos) name.remove_prefix(name.find('@') + 1);
  if (name.size() > 2 && name.front() == '\'') name = name.substr(1, name.size() - 2);
  return name;
}

// Comprehensions, declarations and values of loop variables say nothing that the line does not.
bool isNamed(std::string_view what) {
  return !what.empty() && what.find('=') == what.npos && what != "ac" && what != "vd" && what != "il" && what != "id";
}

bool isOfLibrary(std::string_view file) {
  return file.find("/minizinc/std/") != file.npos || file.find("/minizinc/koru/") != file.npos ||
         file.find("/mznlib/") != file.npos;
}

}  // namespace

std::string placeOf(std::string_view path) {
  Step place;
  std::string calls;
  while (!path.empty()) {
    const std::size_t end = path.find(';');
    const Step step = stepOf(path.substr(0, end));
    path.remove_prefix(end == path.npos ? path.size() : end + 1);
    if (!step.file.empty() && !isOfLibrary(step.file)) place = step;
    if (!step.file.empty() && isNamed(step.what)) calls.append(calls.empty() ? "" : " > ").append(plain(step.what));
  }
  return std::string(place.file) + "\t" + (place.line.empty() ? "0" : std::string(place.line)) + "\t0\t" + calls;
}

}  // namespace koru::fzn
