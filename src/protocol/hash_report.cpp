#include "protocol/hash_report.h"

#include <string>

#include "platform/format_text.h"
#include "platform/text_sink.h"
#include "search/hash_table.h"
#include "search/process_state.h"

namespace valku {

void reportHashTable(bool joined) {
    const std::string text = joined ? formatText("Sharing hashtable with id %i...\n", sharedTableId)
                                    : formatText("info string Create new hashtable with id %i, size = %u\n",
                                                 sharedTableId, static_cast<unsigned>(nHashTables));
    if (processRole == roleRoot) {
        sendText(text);
    } else {
        textSink->note(text);
    }
}

}  // namespace valku
