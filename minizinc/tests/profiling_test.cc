// SPDX-License-Identifier: MIT
#include <algorithm>

#include "minizinc/places.h"
#include "minizinc/tests/support.h"

namespace koru::fzn {
namespace {

TEST(FznProfiling, NamesTheInnermostLineOfTheModel) {
  EXPECT_EQ(placeOf("/m/q.mzn|4|12|4|98|bin|'/\\';/m/q.mzn|5|31|4|62|ca|\\8@alldifferent;/usr/share/minizinc/std/"
                    "a.mzn|9|1|9|2|ca|f;"),
            "/m/q.mzn\t5\t0\t/\\ > alldifferent > f");
}

TEST(FznProfiling, LeavesOutLoops) {
  EXPECT_EQ(placeOf("q.mzn|6|1|6|2|ca|forall;q.mzn|6|1|6|2|ac;q.mzn|6|5|6|6|i=7;q.mzn|7|5|6|6|bin|'<';"),
            "q.mzn\t7\t0\tforall > <");
}

TEST(FznProfiling, TellsTheValuesOfLoopsToWhoAsks) {
  EXPECT_EQ(
      placeOf("q.mzn|6|1|6|2|ca|forall;q.mzn|6|1|6|2|ac;q.mzn|6|5|6|6|i=7;q.mzn|6|5|6|6|j=2;q.mzn|7|5|6|6|bin|'='",
              Places::Loops::kTold),
      "q.mzn\t7\t0\tforall > = [i=7, j=2]");
  EXPECT_EQ(placeOf("q.mzn|6|1|6|2|ca|f;/usr/share/minizinc/std/a.mzn|6|5|6|6|k=7", Places::Loops::kTold),
            "q.mzn\t6\t0\tf");
}

TEST(FznProfiling, BearsAnyText) {
  EXPECT_EQ(placeOf(""), "\t0\t0\t");
  EXPECT_EQ(placeOf(";;|||;"), "\t0\t0\t");
}

TEST(FznProfiling, WritesAReport) {
  const std::string report = (std::filesystem::temp_directory_path() / "koru_fzn_report.txt").string();
  const Ran ran = solve("-a --profile " + report,
                        "var 1..3: x; var 1..3: y;\nconstraint int_lt(x,y) :: mzn_path(\"m.mzn|2|1|2|9|bin|'<';\");\n"
                        "constraint int_ne(x,2);\nsolve satisfy;");
  EXPECT_EQ(ran.status, 0) << ran.output;
  std::ifstream in(report);
  const std::string text((std::istreambuf_iterator<char>(in)), {});
  EXPECT_EQ(text.find("Koru Profiler: Details 1.0\n"), 0U);
  const std::size_t row = text.find("\nm.mzn\t2\t0\t<\tcs_Lt\t");
  ASSERT_NE(row, std::string::npos) << text;
  const std::string line = text.substr(row + 1, text.find('\n', row + 1) - row - 1);
  EXPECT_EQ(std::count(line.begin(), line.end(), '\t'), 9) << text;
  std::filesystem::remove(report);
}

}  // namespace
}  // namespace koru::fzn
