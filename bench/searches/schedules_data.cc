// SPDX-License-Identifier: MIT
// Schedules from files, and drawn ones: shops of the sizes of Lawrence (1984) with durations of 5 to 99, projects of
// the kind of PSPLIB (Kolisch, Sprecher 1996), and projects with one resource and small uses.
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numeric>

#include "instances.h"
#include "searches/schedules.h"

namespace koru::bench::searches {

namespace {

using Numbers = std::vector<int>;

Numbers numbersIn(const std::string &text) {
  Numbers result;
  for (const char *at = text.c_str(); *at != '\0';) {
    char *end = nullptr;
    const bool begins = std::isdigit(static_cast<unsigned char>(*at)) != 0 || *at == '-';
    const long number = begins ? std::strtol(at, &end, 10) : 0;
    if (begins && end != at) result.push_back(static_cast<int>(number));
    at = begins && end != at ? end : at + 1;
  }
  return result;
}

std::string without(const std::string &text, char from, char to) {
  std::string result;
  bool skipped = false;
  for (const char c : text) {
    if (c == from) skipped = true;
    if (!skipped) result += c;
    if (c == to) skipped = false;
  }
  return result;
}

// What stands behind "key =" up to the semicolon.
std::string valueOf(const std::string &text, const std::string &key) {
  for (std::size_t at = text.find(key); at != std::string::npos; at = text.find(key, at + 1)) {
    if (at > 0 && std::isspace(static_cast<unsigned char>(text[at - 1])) == 0) continue;
    const std::size_t next = text.find_first_not_of(" \t", at + key.size());
    if (next != std::string::npos && text[next] == '=') return text.substr(next + 1, text.find(';', next) - next - 1);
  }
  return {};
}

std::vector<Numbers> rows(const Numbers &numbers, std::size_t size) {
  std::vector<Numbers> result;
  for (std::size_t i = 0; i + size <= numbers.size(); i += size)
    result.emplace_back(numbers.begin() + static_cast<long>(i), numbers.begin() + static_cast<long>(i + size));
  return result;
}

// Pairs of machine and duration.
Shop shopOf(const std::string &name, const Numbers &pairs, int jobs, int machines) {
  Shop shop{name, machines, {}};
  for (const Numbers &row : rows(pairs, static_cast<std::size_t>(machines) * 2)) {
    if (static_cast<int>(shop.jobs.size()) == jobs) break;
    shop.jobs.emplace_back();
    for (std::size_t k = 0; k < row.size(); k += 2) shop.jobs.back().push_back({row[k], row[k + 1]});
  }
  return shop;
}

Numbers paired(const Numbers &machines, const Numbers &durations, int count) {
  Numbers result;
  for (std::size_t i = 0; i < durations.size(); ++i) {
    result.push_back(machines.empty() ? static_cast<int>(i) % count : machines[i]);
    result.push_back(durations[i]);
  }
  return result;
}

struct Library {
  std::vector<Shop> jobShops;
  std::vector<Shop> openShops;
  std::vector<Project> projects;

  Library();
  void addFolder(const std::string &folder);
  void read(const std::filesystem::path &path);
  void readData(const std::string &name, const std::string &text);
  void add(const Shop &shop);
  void addProject(Project project, const std::vector<Numbers> &successors);
};

// The same one may lie in several places.
void Library::add(const Shop &shop) {
  for (const Shop &other : jobShops)
    if (other.jobs == shop.jobs) return;
  jobShops.push_back(shop);
}

// Successors by activity, from 1.
void Library::addProject(Project project, const std::vector<Numbers> &successors) {
  project.successors = successors;
  for (Numbers &those : project.successors)
    for (int &one : those) --one;
  projects.push_back(project);
}

void Library::readData(const std::string &name, const std::string &text) {
  const Numbers durations = numbersIn(without(valueOf(text, "job_task_duration"), 'a', '['));
  const Numbers machines = numbersIn(without(valueOf(text, "job_task_machine"), 'a', '['));
  if (!durations.empty()) {
    const int jobs = numbersIn(valueOf(text, "n_jobs")).front();
    const int count = numbersIn(valueOf(text, "n_machines")).front();
    const Shop shop = shopOf(name, paired(machines, durations, count), jobs, count);
    return machines.empty() ? openShops.push_back(shop) : add(shop);
  }
  if (const Numbers pairs = numbersIn(valueOf(text, "job")); !pairs.empty() && !valueOf(text, "m").empty())
    return add(shopOf(name, pairs, numbersIn(valueOf(text, "n")).front(), numbersIn(valueOf(text, "m")).front()));
  if (valueOf(text, "rc").empty() || valueOf(text, "rr").empty() || valueOf(text, "suc").empty()) return;
  Project project{name, numbersIn(valueOf(text, "rc")), numbersIn(valueOf(text, "d")), {}, {}};
  project.uses = rows(numbersIn(valueOf(text, "rr")), project.durations.size());
  std::vector<Numbers> successors;
  const std::string sets = valueOf(text, "suc");
  for (std::size_t at = sets.find('{'); at != std::string::npos; at = sets.find('{', at + 1))
    successors.push_back(numbersIn(sets.substr(at, sets.find('}', at) - at)));
  addProject(project, successors);
}

// PSPLIB's format.
void addPsplib(Library &library, const std::string &name, const std::string &text) {
  const auto section = [&](const char *from, const char *upTo) {
    const std::size_t begin = text.find(from);
    return numbersIn(text.substr(begin, text.find(upTo, begin) - begin));
  };
  const Numbers counts = section("jobs (", "PRECEDENCE");
  const auto n = static_cast<std::size_t>(counts[0]);
  Numbers table = section("jobnr.    #modes", "REQUESTS/DURATIONS");
  std::vector<Numbers> successors;
  for (std::size_t at = 0; at + 2 < table.size(); at += 3 + static_cast<std::size_t>(table[at + 2]))
    successors.emplace_back(table.begin() + static_cast<long>(at + 3),
                            table.begin() + static_cast<long>(at + 3) + table[at + 2]);
  const std::size_t requests = text.find("jobnr. mode duration");
  const std::size_t end = text.find("RESOURCEAVAILABILITIES");
  const Numbers cells = numbersIn(text.substr(text.find('\n', requests), end - text.find('\n', requests)));
  Project project{name, {}, {}, std::vector<Numbers>(cells.size() / n - 3), {}};
  for (const Numbers &row : rows(cells, cells.size() / n)) {
    project.durations.push_back(row[2]);
    for (std::size_t r = 0; r < project.uses.size(); ++r) project.uses[r].push_back(row[3 + r]);
  }
  const Numbers available = numbersIn(text.substr(text.find('\n', text.find('\n', end) + 1)));
  project.capacities.assign(available.begin(), available.begin() + static_cast<long>(project.uses.size()));
  library.addProject(project, successors);
}

void Library::read(const std::filesystem::path &path) {
  std::ifstream file(path);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  const std::string extension = path.extension().string();
  const std::string name = path.stem().string();
  if (extension == ".dzn") readData(name, "\n" + without(text, '%', '\n'));
  if (extension == ".sm") addPsplib(*this, name, without(text, '*', '\n'));
  const bool isShop = name.rfind("jobshop_", 0) == 0 || path.parent_path().filename() == "jobshop";
  if (!isShop || (extension != ".txt" && !extension.empty())) return;
  const Numbers numbers = numbersIn(without(text, '#', '\n'));
  if (numbers.size() > 2 && numbers[0] > 0)
    add(shopOf(name, Numbers(numbers.begin() + 2, numbers.end()), numbers[0], numbers[1]));
}

void Library::addFolder(const std::string &folder) {
  std::vector<std::filesystem::path> paths;
  for (const auto &entry : std::filesystem::recursive_directory_iterator(folder))
    if (entry.is_regular_file() && entry.path().stem() != "optima") paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  for (const auto &path : paths) read(path);
}

// ----- drawn

Shop drawShop(const std::string &kind, Random &random, int jobs, int machines) {
  Shop shop{kind + " " + std::to_string(jobs) + "x" + std::to_string(machines), machines, {}};
  for (int j = 0; j < jobs; ++j) {
    shop.jobs.emplace_back();
    for (const int machine : random.permutation(machines)) shop.jobs.back().push_back({machine, 5 + random.below(95)});
  }
  return shop;
}

struct Kind {
  const char *name;
  int activities;
  int resources;
  int mostUse;  // an activity takes so much at most, and nothing in `idle` of 100
  int capacity;
  int idle;
  int chained;  // so many of 100 wait for another one
};

Project drawProject(const Kind &kind, Random &random, int number) {
  Project project{kind.name + std::string(" #") + std::to_string(number), {}, {}, {}, {}};
  const auto n = static_cast<std::size_t>(kind.activities);
  project.capacities.assign(static_cast<std::size_t>(kind.resources), kind.capacity);
  project.uses.assign(static_cast<std::size_t>(kind.resources), Numbers(n));
  project.successors.resize(n);
  for (std::size_t i = 0; i < n; ++i) {
    project.durations.push_back(1 + random.below(10));
    for (Numbers &uses : project.uses) uses[i] = random.below(100) < kind.idle ? 0 : 1 + random.below(kind.mostUse);
    for (int k = random.below(3); i > 0 && k >= 0; --k)
      if (random.below(100) < kind.chained)
        project
            .successors[i - 1 - static_cast<std::size_t>(random.below(static_cast<int>(std::min<std::size_t>(i, 8))))]
            .push_back(static_cast<int>(i));
  }
  return project;
}

constexpr Kind kKinds[] = {
    {"drawn one of 5", 20, 1, 3, 5, 0, 40}, {"drawn 30", 30, 4, 10, 17, 50, 60}, {"drawn 60", 60, 4, 10, 20, 50, 60}};

Library::Library() {
  addFolder(KORU_EXAMPLE_DATA);
  if (!dataFolder.empty()) addFolder(dataFolder);
  Random random(1);
  for (const auto &[jobs, machines] :
       {std::pair{10, 5}, {15, 5}, {20, 5}, {10, 10}, {15, 10}, {20, 10}, {30, 10}, {15, 15}})
    jobShops.push_back(drawShop("drawn", random, jobs, machines));
  for (const int size : {4, 5, 7, 10}) openShops.push_back(drawShop("drawn", random, size, size));
  for (const Kind &kind : kKinds)
    for (int number = 1; number <= 4; ++number) projects.push_back(drawProject(kind, random, number));
}

const Library &library() {
  static const Library all;
  return all;
}

}  // namespace

int Shop::horizon() const {
  int sum = 0;
  for (const auto &job : jobs)
    for (const Operation &operation : job) sum += operation.duration;
  return sum;
}

int Project::horizon() const { return std::accumulate(durations.begin(), durations.end(), 0); }

Choices::Choices() {
  Random random(1);
  int quickest = 0;
  for (int i = 0; i < kTasks; ++i) {
    durations.emplace_back();
    for (int m = 0; m < kMachines; ++m) durations.back().push_back(5 + random.below(45));
    quickest += *std::min_element(durations.back().begin(), durations.back().end());
  }
  horizon = quickest * 6 / 5 / kMachines;
}

const std::vector<Shop> &jobShops() { return library().jobShops; }
const std::vector<Shop> &openShops() { return library().openShops; }
const std::vector<Project> &projects() { return library().projects; }

}  // namespace koru::bench::searches
