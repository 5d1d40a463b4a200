#include "fuzz/watchful_client.h"

#include "fuzz/scratch.h"
#include "mailbox/messages.h"
#include "platform/clock.h"

namespace vellobar::fuzz {

namespace {

constexpr std::string_view kMailbox = "box/test.mbox";
constexpr std::string_view kOther = "box/other.mbox";

std::string told_by_counts(const CVellobar& control) {
  return std::to_string(control.Changed()) + " count " + std::to_string(control.Messages()->Count());
}

}  // namespace

WatchfulClient::WatchfulClient(std::string_view content, bool reads_attachments)
    : content_(content), reads_attachments_(reads_attachments), temporary_(in_scratch("temporary/")) {
  for (const char* folder : {"box", "temporary", "files"}) make_empty_scratch_folder(folder);
  tests::write_file(in_scratch(kMailbox), content_);
  tests::write_file(in_scratch(kOther), "From other\nSubject: other\n\ntext of the other\n");
  control_.SetFilename(tests::wide(in_scratch(kMailbox)));
  control_.Lock();
  other_.SetFilename(tests::wide(in_scratch(kOther)));
  other_.Lock();
}

WatchfulClient::~WatchfulClient() = default;

void WatchfulClient::step(Choices& choices) {
  const std::vector<Step>& all = steps();
  const Step chosen = all[choices.below(all.size())];
  // Boundaries that are made hold the ticks: no two of them are the same.
  const platform::FixedClock clock({}, ticks_++);
  seen_ += std::string(chosen.name) + '\n';
  note("done", [&] {
    (this->*chosen.take)(choices);
    return "yes";
  });
  // Each of these may have closed a file of a message's own.
  using Client = WatchfulClient;
  for (const auto closes : {&Client::put_text, &Client::put_body, &Client::peek, &Client::unload}) {
    if (chosen.take == closes) let_go_of_strays();
  }
  seen_ += "  changed " + told_by_counts(control_) + " and " + told_by_counts(other_) + '\n';
}

void WatchfulClient::finish() {
  const platform::FixedClock clock({}, ticks_++);
  let_go_of_strays();
  for (CVellobar* control : {&control_, &other_}) {
    note("updated", [&] {
      control->Update();
      return "yes";
    });
    note_file(*control);
  }
  note_all_held();
  for (const Message& message : control_.Messages()) note_message(*message);
}

const std::vector<WatchfulClient::Step>& WatchfulClient::steps() {
  using Client = WatchfulClient;
  static const std::vector<Step> all = {{"glance", &Client::glance},
                                        {"glance", &Client::glance},
                                        {"read tree", &Client::read_tree},
                                        {"read headers of all", &Client::read_headers_of_all},
                                        {"read headers of all", &Client::read_headers_of_all},
                                        {"read parts of all", &Client::read_parts_of_all},
                                        {"read parts of all", &Client::read_parts_of_all},
                                        {"hold message", &Client::hold_message},
                                        {"hold message", &Client::hold_message},
                                        {"hold parts", &Client::hold_parts},
                                        {"hold headers", &Client::hold_headers},
                                        {"hold header", &Client::hold_header},
                                        {"hold attachments", &Client::hold_attachments},
                                        {"hold attachment", &Client::hold_attachment},
                                        {"begin walk", &Client::begin_walk},
                                        {"walk on", &Client::walk_on},
                                        {"read held", &Client::read_held},
                                        {"let go", &Client::let_go},
                                        {"let go", &Client::let_go},
                                        {"let go", &Client::let_go},
                                        {"add header", &Client::add_header},
                                        {"remove header", &Client::remove_header},
                                        {"put header", &Client::put_header},
                                        {"put named header", &Client::put_named_header},
                                        {"put text", &Client::put_text},
                                        {"put body", &Client::put_body},
                                        {"put mail info", &Client::put_mail_info},
                                        {"put tag", &Client::put_tag},
                                        {"add message", &Client::add_message},
                                        {"add object", &Client::add_object},
                                        {"remove message", &Client::remove_message},
                                        {"add part", &Client::add_part},
                                        {"add part object", &Client::add_part_object},
                                        {"remove part", &Client::remove_part},
                                        {"remove all", &Client::remove_all},
                                        {"attach", &Client::attach},
                                        {"change attachment", &Client::change_attachment},
                                        {"save attachment", &Client::save_attachment},
                                        {"scan text", &Client::scan_text},
                                        {"load", &Client::load},
                                        {"unload", &Client::unload},
                                        {"peek", &Client::peek},
                                        {"save", &Client::save},
                                        {"deliver", &Client::deliver},
                                        {"update", &Client::update},
                                        {"update other", &Client::update_other},
                                        {"lock again", &Client::lock_again}};
  return all;
}

void WatchfulClient::deliver(Choices&) {
  tests::append_to_file(in_scratch(kMailbox), "From mailer\nSubject: delivered\n\nnew mail\n");
}

void WatchfulClient::update(Choices&) {
  let_go_of_strays();
  control_.Update();
  note_file(control_);
}

void WatchfulClient::update_other(Choices&) {
  let_go_of_strays();
  other_.Update();
  note_file(other_);
}

/// What messages of a closed mailbox say depends on what was read of them, so none of them is held.
void WatchfulClient::lock_again(Choices&) {
  messages_.clear();
  collections_.clear();
  headers_.clear();
  single_headers_.clear();
  attachments_.clear();
  single_attachments_.clear();
  walks_.clear();
  control_.Unlock();
  control_.Lock();
}

}  // namespace vellobar::fuzz
