#pragma once

#include <vector>

#include "distributed/client_search_process.h"
#include "platform/process.h"

namespace valku {

// A second copy of this program as a child process, on two pipes. It shares the hash table.
class LocalClientSearchProcess final : public AbstractClientSearchProcess {
  public:
    // Starts the child; inError if the system does not start it. Whether the child can work shows in the
    // first job.
    LocalClientSearchProcess(const std::string& programPath, const std::vector<std::string>& arguments);

    std::string name() const override { return "localClient"; }
    bool hasEnded() override { return child.hasEnded(); }
    void cutOff() override;

  protected:
    i32 readData() override;
    void writeData(std::string_view text) override;
    bool hasData() override { return child.hasOutput(); }

  private:
    ChildProcess child;
};

}  // namespace valku
