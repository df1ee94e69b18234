#pragma once

#include "platform/text_sink.h"

namespace valku {

// In which language the root process talks. A process in any other role has UCI, without identification.
enum ProtocolMode { protocolUndecided = -1, protocolConsole = 0, protocolXboard = 1, protocolUci = 2 };

// Written by settleProtocol alone; read by any thread.
inline ProtocolMode protocolMode = protocolUndecided;

// By the main thread before there is another, and by the commands that change the protocol later.
inline void settleProtocol(ProtocolMode mode) {
    protocolMode = mode;
    informationPrefix = mode == protocolUci ? "info string " : "";
}

}  // namespace valku
