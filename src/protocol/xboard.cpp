#include "protocol/xboard.h"

#include <string>

#include "platform/text_sink.h"
#include "protocol/engine_name.h"
#include "protocol/protocol_mode.h"

namespace valku {

void sendXboardFeatures() {
    settleProtocol(protocolXboard);
    sendText("feature myname=\"" + std::string(engineName) +
             "\" sigint=0\nfeature variants=\"normal,fischerandom\"\n");
}

}  // namespace valku
