#include "distributed/split_root_search.h"

#include "distributed/root_search_process.h"

namespace valku {

SearchResult splitRootSearch(const Position& position, i32 alpha, i32 beta, i32 depth, bool zws) {
    rootSearchProcess->setJob(position, {1, alpha, beta, depth, zws}, nullptr);
    rootSearchProcess->runRootSearch(rootSearchProcess->inError);
    SearchResult result;
    return *rootSearchProcess->getResult(&result);
}

}  // namespace valku
