// SPDX-License-Identifier: MIT
#include "minizinc/places.h"

#include <algorithm>

namespace koru::fzn {

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

bool isOperator(std::string_view what) { return what.size() > 2 && what.front() == '\'' && what.back() == '\''; }

bool isLoop(const Step &step) { return step.what.find('=') != step.what.npos && !isOperator(step.what); }

// Comprehensions, declarations and values of loop variables say nothing that the line does not.
bool isNamed(std::string_view what) {
  return !what.empty() && what.find('=') == what.npos && what != "ac" && what != "vd" && what != "il" && what != "id";
}

bool isOfLibrary(std::string_view file) {
  return file.find("/minizinc/std/") != file.npos || file.find("/minizinc/koru/") != file.npos ||
         file.find("/mznlib/") != file.npos;
}

// The text of an annotation that has one; empty without.
std::string_view textOf(const Syntax &s, const Constraint &c, std::string_view annotation) {
  const Expr *e = s.find(c.annotations, annotation);
  const bool has =
      e != nullptr && e->kind == Kind::kCall && e->part.count == 1 && s.list(e->part)[0].kind == Kind::kString;
  return has ? s.string(s.list(e->part)[0]) : std::string_view();
}

std::string inFile(const Syntax &s, const Constraint &c) {
  const auto line = 1 + std::count(s.text.begin(), s.text.begin() + c.at, '\n');
  return s.file + "\t" + std::to_string(line) + "\t0\t" + std::string(s.name(c.at));
}

}  // namespace

std::string placeOf(std::string_view path, Places::Loops loops) {
  Step place;
  std::string calls;
  std::string values;
  while (!path.empty()) {
    const std::size_t end = path.find(';');
    const Step step = stepOf(path.substr(0, end));
    path.remove_prefix(end == path.npos ? path.size() : end + 1);
    if (!step.file.empty() && !isOfLibrary(step.file)) place = step;
    const bool tells = isNamed(step.what) || (loops == Places::Loops::kTold && isOperator(step.what));
    if (!step.file.empty() && tells) calls.append(calls.empty() ? "" : " > ").append(plain(step.what));
    if (!isOfLibrary(step.file) && isLoop(step)) values.append(values.empty() ? " [" : ", ").append(step.what);
  }
  if (loops == Places::Loops::kTold && !values.empty()) calls += values + "]";
  return std::string(place.file) + "\t" + (place.line.empty() ? "0" : std::string(place.line)) + "\t0\t" + calls;
}

Places::Places(const Syntax &syntax, const Model &model, Loops loops) : syntax_(syntax), model_(model), loops_(loops) {
  cs_setProfilerLocator("file line address function", locate, this);
}

// A name that the user has given, as in "constraint :: "name" ...", goes before the rest.
const char *Places::locate(void *self) {
  auto &places = *static_cast<Places *>(self);
  const Constraint *c = places.model_.current();
  if (c == nullptr) return places.model_.isPosting() ? "domains of variables\t0\t0\t" : "(search)\t0\t0\t(search)";
  const Syntax &s = places.syntax_;
  const std::string_view path = textOf(s, *c, "mzn_path");
  places.place_ = path.empty() ? inFile(s, *c) : placeOf(path, places.loops_);
  const std::string_view name = textOf(s, *c, "mzn_constraint_name");
  if (!name.empty() && places.loops_ == Loops::kTold)
    places.place_.insert(places.place_.rfind('\t') + 1, std::string(name) + ": ");
  return places.place_.c_str();
}

}  // namespace koru::fzn
