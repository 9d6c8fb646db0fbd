// SPDX-License-Identifier: MIT
// Which locator names the places of postings.
#pragma once

namespace koru {

// What the host called the format of its locator's texts; null when it gave none, or has no locator installed.
const char *locatorFormat();

}  // namespace koru
