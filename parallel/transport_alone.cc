// SPDX-License-Identifier: MIT
// What the library is built of where there is no MPI.
#include "parallel/transport_alone.h"

namespace koru::parallel {

std::unique_ptr<Transport> connect() { return std::make_unique<Alone>(); }

}  // namespace koru::parallel
