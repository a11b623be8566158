#pragma once

#include <boost/log/attributes/value_extraction.hpp>
#include <boost/log/core/core.hpp>
#include <boost/log/expressions/message.hpp>
#include <boost/log/sinks/basic_sink_backend.hpp>
#include <boost/log/sinks/sync_frontend.hpp>
#include <boost/smart_ptr/make_shared.hpp>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace foundation::log::test {

struct Record {
  std::string channel;
  std::uint32_t severity;
  std::string message;
  bool operator==(const Record&) const = default;
};

/// Keeps the records that come out of the log, as long as it lives.
class LogRecords {
 public:
  LogRecords() { boost::log::core::get()->add_sink(sink_); }
  ~LogRecords() { boost::log::core::get()->remove_sink(sink_); }
  LogRecords(const LogRecords&) = delete;
  LogRecords& operator=(const LogRecords&) = delete;

  std::vector<Record> all() const { return sink_->locked_backend()->records; }
  void setFailing(bool fails) { sink_->locked_backend()->fails = fails; }

 private:
  class Collector : public boost::log::sinks::basic_sink_backend<boost::log::sinks::synchronized_feeding> {
   public:
    void consume(const boost::log::record_view& record) {
      if (fails)
        throw std::runtime_error("the disk is full");
      records.push_back({*boost::log::extract<std::string>("Channel", record),
                         *boost::log::extract<std::uint32_t>("Severity", record),
                         *boost::log::extract<std::string>("Message", record)});
    }
    std::vector<Record> records;
    bool fails = false;
  };
  using Sink = boost::log::sinks::synchronous_sink<Collector>;

  boost::shared_ptr<Sink> sink_ = boost::make_shared<Sink>();
};

}  // namespace foundation::log::test
