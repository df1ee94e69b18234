#include "protocol/hash_report.h"

#include "search/format_text.h"
#include "search/hash_table.h"
#include "search/output.h"
#include "search/process_state.h"

namespace valku {

void reportHashTable(bool joined) {
    if (processRole != roleRoot) return;
    sendText(joined ? formatText("Sharing hashtable with id %i...\n", sharedTableId)
                    : formatText("info string Create new hashtable with id %i, size = %u\n", sharedTableId,
                                 static_cast<unsigned>(nHashTables)));
}

}  // namespace valku
