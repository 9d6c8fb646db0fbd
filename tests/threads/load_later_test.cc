// SPDX-License-Identifier: MIT
// Both flavours as shared libraries that a running program loads, side by side: each has its own state. The one for
// threads needs more static thread storage than glibc keeps free for libraries that come later; what asks for more of
// it is in the environment of this test (GLIBC_TUNABLES).
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <array>
#include <thread>
#include <vector>

#include "koru.h"

namespace {

class Library {
 public:
  explicit Library(const char *path) : handle_(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {}
  Library(const Library &) = delete;
  Library &operator=(const Library &) = delete;
  ~Library() {
    if (handle_ != nullptr) dlclose(handle_);
  }
  bool opened() const { return handle_ != nullptr; }

  // A function of this library, by the declaration of the header.
  template <class Function>
  Function *find(Function &, const char *name) const {
    return reinterpret_cast<Function *>(dlsym(handle_, name));
  }
#define KORU_OF(library, function) (*(library).find(function, #function))

 private:
  void *handle_;
};

std::vector<CSint *> begin(const Library &l, int n) {
  KORU_OF(l, cs_init)();
  std::vector<CSint *> x;
  for (int i = 0; i < n; ++i) x.push_back(KORU_OF(l, cs_createCSint)(0, n - 1));
  EXPECT_TRUE(KORU_OF(l, cs_AllNeq)(x.data(), n));
  return x;
}

// Choice points of all permutations. The selection is the library's own.
int finish(const Library &l, std::vector<CSint *> x) {
  EXPECT_TRUE(KORU_OF(l, cs_findAll)(x.data(), static_cast<int>(x.size()), &KORU_OF(l, cs_findFreeVar), nullptr));
  const int choicePoints = KORU_OF(l, cs_getNbChoicePoints)();
  KORU_OF(l, cs_end)();
  return choicePoints;
}

TEST(LoadedLater, BothFlavoursSideBySide) {
  const Library plain(KORU_LIBRARY);
  ASSERT_TRUE(plain.opened()) << dlerror();
  const Library threads(KORU_THREADS_LIBRARY);
  ASSERT_TRUE(threads.opened()) << dlerror() << ": by hand, run it with the environment that CTest gives it";

  const std::vector<CSint *> x = begin(plain, 4);
  std::array<int, 4> counts{};
  std::vector<std::thread> workers;
  for (int &count : counts)
    workers.emplace_back([&threads, &count] {
      for (int i = 0; i < 10; ++i) count += finish(threads, begin(threads, 5));
    });
  for (std::thread &worker : workers) worker.join();
  const int expected = finish(threads, begin(threads, 5));
  EXPECT_GT(expected, 100);
  for (const int count : counts) EXPECT_EQ(count, 10 * expected);
  EXPECT_EQ(finish(plain, x), finish(threads, begin(threads, 4)));
}

}  // namespace
