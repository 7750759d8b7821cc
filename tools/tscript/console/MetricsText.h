// Metrics in the text form that Prometheus reads (version 0.0.4), for example from files by the textfile
// collector of its node exporter.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

class MetricsText {
  public:
    using Labels = std::vector<std::pair<std::string_view, std::string_view>>;

    // Starts a metric. The samples that follow belong to it; one without samples is left out.
    void add(std::string_view name, std::string_view type, std::string_view help);
    // `suffix` is appended to the metric's name, as in "_sum" of a summary.
    void sample(double value, const Labels& labels = {}, std::string_view suffix = {});
    const std::string& text() const { return m_text; }

  private:
    std::string m_name;
    std::string m_heading;  // not yet written
    std::string m_text;
};
