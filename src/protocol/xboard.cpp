#include "protocol/xboard.h"

#include "platform/text_sink.h"
#include "search/process_state.h"

namespace valku {

void sendXboardFeatures() {
    protocolMode = protocolXboard;
    sendText("feature myname=\"Valku 4.00\" sigint=0\nfeature variants=\"normal,fischerandom\"\n");
}

}  // namespace valku
