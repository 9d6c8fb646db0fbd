// SPDX-License-Identifier: MIT
// The trace in docs/no-goods.md is what the library prints.
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "support/no_goods/restart_test.h"

namespace {

using namespace koru::test;
using namespace koru::test::nogood;

// The problem of the document. Of w, z, s and t no two are equal; z = 3 is impossible, too. So there is no solution,
// but that takes a value of w and one of z to see. x and y have nothing to do with it.
class TraceTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    const int sizes[] = {2, 2, 3, 4};
    for (int i = 0; i < 4; ++i) v[i] = cs_createCSint(0, sizes[i] - 1);
    CSint *s = cs_createCSint(0, 2);
    CSint *t = cs_createCSint(0, 2);
    ASSERT_TRUE(cs_Neq(v[0], v[3]) && cs_Neq(v[0], s) && cs_Neq(v[0], t));
    ASSERT_TRUE(cs_Neq(v[3], s) && cs_Neq(v[3], t) && cs_Neq(s, t));
    CSint *g = cs_createCSint(0, 1);
    CSint *h = cs_createCSint(0, 1);
    ASSERT_TRUE(cs_IfEq(v[3], g, 3, 0) && cs_IfEq(v[3], h, 3, 0) && cs_Neq(g, h));
    set = cs_createNoGoodSet(v, 4, noteRecorded, 0, nullptr, this);
  }

  static std::string text(const Literals &literals) {
    static const char *const kSigns[] = {" = ", " != ", " <= ", " < ", " >= ", " > "};
    std::ostringstream out;
    for (const Literal &l : literals)
      out << (out.tellp() > 0 ? ", " : "") << "wxyz"[l.index] << kSigns[l.method] << l.value;
    return "{" + out.str() + "}";
  }
  std::string setText() const {
    std::string result;
    for (const Literals &l : contents(set)) result += (result.empty() ? "" : " ") + text(l);
    return result;
  }

  std::string trace() {
    CSvalueSelector *const halves = cs_getValueSelector(CS_SELECT_LOWER_HALF);
    CSvalueSelector *const ascending = cs_getValueSelector(CS_SELECT_ASCENDING);
    CSvalueSelector *selectors[] = {ascending, halves, ascending, ascending};
    CSsearchNotify *notify = cs_createSearchNotify(this);
    cs_searchNotifySetSearchStart(notify, noteStart);
    cs_searchNotifySetSearchEnd(notify, noteEnd);
    const auto limit = [](void *last) {
      return std::exchange(*static_cast<int *>(last), 2 * *static_cast<int *>(last));
    };
    int last = 1;
    EXPECT_FALSE(cs_searchValueSelectorRestartNG(v, selectors, 4, firstFree, limit, &last, 0, set, notify));
    cs_freeSearchNotify(notify);
    return out_.str();
  }

  CSint *v[4] = {};
  CSnoGoodSet *set = nullptr;

 private:
  static bool noteRecorded(CSnoGoodSet *, CSnoGood *noGood, CSint **, int, void *self) {
    static_cast<TraceTest *>(self)->recorded_ += " " + text(literalsOf(noGood));
    return true;
  }
  static void noteStart(int, CSint **, int, void *self) {
    auto &test = *static_cast<TraceTest *>(self);
    if (test.run_++ > 0) test.out_ << "             set after shortening " << test.setText() << "\n";
  }
  static void noteEnd(bool, int fails, int limit, CSint **, int, void *self) {
    auto &test = *static_cast<TraceTest *>(self);
    test.out_ << "    run " << test.run_ << ": " << fails << " of " << limit << " fails";
    if (!test.recorded_.empty()) test.out_ << ", recorded" << test.recorded_;
    test.out_ << "\n";
    test.recorded_.clear();
  }

  std::ostringstream out_;
  std::string recorded_;
  int run_ = 0;
};

TEST_F(TraceTest, IsTheOneInTheDocument) {
  const auto root = std::filesystem::path(__FILE__).parent_path().parent_path().parent_path();
  std::ifstream file(root / "docs" / "no-goods.md");
  ASSERT_TRUE(file) << "the test runs inside the source tree";
  std::stringstream document;
  document << file.rdbuf();
  const std::string printed = trace();
  EXPECT_NE(document.str().find(printed), std::string::npos) << printed;
}

}  // namespace
