// Client over FreeTDS's DB-Library.
#pragma once

#include "client/Client.h"
#include "options/Options.h"

struct tds_dblib_dbprocess;

namespace sqlcmd {

class DbLibClient : public Client {
  public:
    // See connect().
    explicit DbLibClient(Options& options);
    ~DbLibClient() override;
    DbLibClient(const DbLibClient&) = delete;
    DbLibClient& operator=(const DbLibClient&) = delete;

    std::string_view sessionSettings() const override;
    std::unique_ptr<RunningBatch> run(const std::string& batch, MessageHandler handler) override;
    void setQueryTimeout(int seconds) override;
    void setTick(std::function<void()> tick) override;
    bool isDead() const override;

  private:
    tds_dblib_dbprocess* m_process = nullptr;
};

}  // namespace sqlcmd
