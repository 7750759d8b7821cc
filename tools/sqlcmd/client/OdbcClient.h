// Client over an ODBC driver.
#pragma once

#include "client/Client.h"
#include "client/Connection.h"

namespace sqlcmd {

class OdbcClient : public Client {
  public:
    // See connect().
    OdbcClient(Options& options, std::string_view driver) : m_connection(options, driver) {}

    std::string_view sessionSettings() const override { return {}; }
    std::unique_ptr<RunningBatch> run(const std::string& batch, MessageHandler handler) override;
    void setQueryTimeout(int seconds) override { m_connection.setQueryTimeout(seconds); }
    bool isDead() const override { return m_connection.isDead(); }

  private:
    Connection m_connection;
};

}  // namespace sqlcmd
