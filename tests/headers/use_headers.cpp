// All public headers, used from C++17.
#include "tevcv.h"

#include <array>
#include <string>

#include "tevcore.h"

int main() {
  const std::array<Tev32f, 4> a = {1, 2, 3, 4};
  std::array<Tev32f, 4> d{};
  if (teviAbsDiffC_32f_C1R(a.data(), 8, d.data(), 8, TevSize{2, 2}, 2.5F) != tevStatusOk) return 1;
  if (d != std::array<Tev32f, 4>{1.5F, 0.5F, 0.5F, 1.5F}) return 1;
  Tev64f* const block = tevsMalloc_64f(3);
  if (!block) return 1;
  tevsFree(block);
  return std::string(tevcvGetLibVersion()->versionText) == "5.2" ? 0 : 1;
}
