// SPDX-License-Identifier: MIT
// The library's memory as the harness sees it: blocks that are not freed yet, and requests that are refused, either
// because a trace asks for it or because they are so large that a campaign could not afford them.
#pragma once

namespace koru::traces {

long liveBlocks();      // of the library
int refusedRequests();  // so far
void watchRequests();
// Refuse the request after the next `first`, and with `all` every one that follows.
void refuseRequest(int first, bool all);
void refuseNothing();
void loseBlock();  // for a seeded fault: one that nobody frees

}  // namespace koru::traces
