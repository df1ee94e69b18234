#include "protocol/hash_report.h"

#include <string>

#include "distributed/process_role.h"
#include "platform/format_text.h"
#include "platform/text_sink.h"
#include "search/hash_table.h"

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
