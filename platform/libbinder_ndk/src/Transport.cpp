#include "Transport.h"

namespace abinder {

__attribute__((weak)) std::shared_ptr<Transport> openProcessTransport() {
    return nullptr;
}

std::shared_ptr<Transport> processTransport() {
    static const std::shared_ptr<Transport> transport = openProcessTransport();
    return transport;
}

}  // namespace abinder
