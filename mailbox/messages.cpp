#include "mailbox/messages.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "errors/error.h"
#include "mailbox/line_sink.h"
#include "mailbox/message.h"
#include "mailbox/part_tree.h"
#include "mailbox/scanner.h"
#include "mailbox/separator_line.h"
#include "platform/ascii.h"
#include "platform/code_page.h"
#include "platform/file.h"

namespace vellobar {

namespace {

class EntrySink final : public mailbox::ExtentSink {
 public:
  explicit EntrySink(mailbox::MadeOnUse<mailbox::MessageEntry>& entries) : entries_(entries) {}
  void found(const mailbox::Extent& extent) override { entries_.push_back(mailbox::MessageEntry(extent)); }

 private:
  mailbox::MadeOnUse<mailbox::MessageEntry>& entries_;
};

}  // namespace

CMessages::CMessages() : CMessages(OwnerLink()) {}

CMessages::CMessages(OwnerLink owner) : owner_(std::move(owner)), separator_(mailbox::kWideSeparator) {}

CMessages::CMessages(OwnerLink owner, CMessage& parent)
    : owner_(std::move(owner)), parent_(&parent), separator_(mailbox::kWideSeparator), is_of_parts_(true) {}

CMessages::~CMessages() {
  for (const std::weak_ptr<CMessage>& removed : removed_) {
    if (const std::shared_ptr<CMessage> message = removed.lock()) message->forget_collection(*this);
  }
  give_up_items();
}

void CMessages::give_up_items() noexcept {
  std::shared_ptr<CMessages> to_release;
  release_items(to_release);
  release_tree(to_release);
  release(std::move(to_release));
}

void CMessages::release(std::shared_ptr<CMessages> parts) noexcept {
  while (parts) {
    // Taken out of the list before what is below it goes in.
    const std::shared_ptr<CMessages> first = std::move(parts);
    parts = std::move(first->next_to_release_);
    first->parent_ = nullptr;
    // What a client holds as well keeps its items.
    if (first.use_count() > 1) continue;
    first->release_items(parts);
    first->release_tree(parts);
  }
}

/// The parts of the items go to the front of a list of collections.
void CMessages::release_items(std::shared_ptr<CMessages>& to_release) noexcept {
  for (; !items_.empty(); items_.pop_back()) {
    const std::shared_ptr<CMessage> object = items_.back().give_up_object();
    if (!object) continue;
    object->forget_collection(*this);
    if (object.use_count() > 1) continue;
    std::shared_ptr<CMessages> parts = object->give_up_parts();
    if (!parts) continue;
    parts->next_to_release_ = std::move(to_release);
    to_release = std::move(parts);
  }
}

/// The detached collections of a tree that ends go to the front of a list, too.
void CMessages::release_tree(std::shared_ptr<CMessages>& to_release) noexcept {
  if (!own_tree_) return;
  while (std::shared_ptr<CMessages> parts = own_tree_->take_any()) {
    parts->next_to_release_ = std::move(to_release);
    to_release = std::move(parts);
  }
  own_tree_.reset();
}

std::shared_ptr<CMessage> CMessages::Item(std::int64_t index) {
  if (index < 0 || index >= Count()) throw Error(Status::invalid_argument);
  return object_at(static_cast<std::size_t>(index));
}

std::shared_ptr<CMessage> CMessages::object_at(std::size_t index) {
  Entry& entry = items_[index];
  if (entry.object()) return entry.object();
  std::shared_ptr<CMessage> object = new_object(entry);
  object->remember_index(static_cast<std::int64_t>(index));
  if (owner_) owner_->recent.make_room();
  entry.keep(object);
  first_object_ = std::min(first_object_, index);
  if (owner_) owner_->recent.add(object);
  return object;
}

std::shared_ptr<CMessage> CMessages::for_walking(std::int64_t index) {
  const Entry& entry = items_[static_cast<std::size_t>(index)];
  if (entry.object()) return entry.object();
  // What takes up a detached collection, or leads to one, has to stay.
  const std::shared_ptr<mailbox::PartTree> tree = tree_.lock();
  const bool stays = tree && tree->has_detached(entry.start(), entry.extent().end);
  return stays ? object_at(static_cast<std::size_t>(index)) : new_object(entry);
}

std::shared_ptr<CMessage> CMessages::new_object(const Entry& entry) {
  auto object = std::make_shared<CMessage>(owner_, this, file_, entry.extent());
  object->be_in(tree_);
  mailbox::Traces traces = entry.traces();
  if (parts_were_read_) traces.headers_were_read = traces.body_was_read = traces.parts_were_read = true;
  object->bear(traces);
  return object;
}

void CMessages::keep_headers_that_run_on(CMessage& message) noexcept {
  constexpr long kHereAndInTheCollection = 2;
  const std::shared_ptr<CMessage> before = with_headers_that_run_on_.lock();
  const bool is_held = before && before.use_count() > kHereAndInTheCollection;
  if (before && before.get() != &message && !is_held) before->drop_unchanged_headers();
  with_headers_that_run_on_ = message.weak_from_this();
}

void CMessages::append_existing(std::vector<CMessage*>& to) const {
  for (const Entry& entry : items_) {
    if (entry.object()) to.push_back(entry.object().get());
  }
}

bool CMessages::has_held_items() const {
  return std::any_of(items_.begin(), items_.end(), [](const Entry& entry) { return entry.object().use_count() > 1; });
}

bool CMessages::is_as_scanned() const {
  return !is_edited_ && std::all_of(items_.begin(), items_.end(), [&](const Entry& entry) {
    return !entry.object() || entry.object()->is_read_from(file_.get(), entry.extent());
  });
}

std::int64_t CMessages::position_of(const CMessage& message) const {
  // Nearly always the message still is where it was found last; removals before it shift it.
  const std::int64_t remembered = message.remembered_index();
  if (remembered >= 0 && remembered < Count() &&
      items_[static_cast<std::size_t>(remembered)].object().get() == &message) {
    return remembered;
  }
  const auto is_place = [&](const Entry& entry) { return entry.object().get() == &message; };
  // A message that has one place is not far in front of where it was.
  const std::int64_t was = std::clamp<std::int64_t>(remembered, 0, Count());
  std::int64_t position = was - 1;
  while (position >= 0 && !is_place(items_[static_cast<std::size_t>(position)])) --position;
  if (position < 0)
    position = std::find_if(items_.begin() + static_cast<std::ptrdiff_t>(was), items_.end(), is_place) - items_.begin();
  if (position == Count()) return -1;
  message.remember_index(position);
  return position;
}

std::shared_ptr<CMessage> CMessages::Add() {
  std::shared_ptr<CMessage> added = adopt(nullptr, 0);
  mark_changed(owner_);
  return added;
}

std::shared_ptr<CMessage> CMessages::Add(std::u16string_view filename) {
  const std::string path = platform::process_bytes(filename);
  if (path.empty()) return Add();
  std::shared_ptr<platform::File> file = platform::File::open(path);
  if (!file) {
    if (owner_ && owner_->control != nullptr) throw Error(ErrorNumber::cannot_open_file, Reporter::messages);
    throw Error(Status::fail);
  }
  const std::int64_t size = file->size();
  std::shared_ptr<CMessage> added = adopt(std::move(file), size);
  mark_changed(owner_);
  return added;
}

void CMessages::Add(const std::shared_ptr<CMessage>& message) {
  if (!message || message->has_below(*this)) throw Error(Status::invalid_argument);
  // Whole: the file it is read from may be closed before this collection is written.
  message->load_tree(true);
  message->leave_tree();
  message->forget_index();
  append(message, Carries::its_own_line);
  mark_changed(owner_);
}

std::shared_ptr<CMessage> CMessages::adopt(std::shared_ptr<platform::File> file, std::int64_t size) {
  auto message = std::make_shared<CMessage>(owner_, this, std::move(file), size);
  if (parent_ == nullptr) message->recognise_separator_line();
  // First of all: what there is no memory for is not added.
  message->Load();
  append(message, Carries::the_delimiter);
  return message;
}

std::shared_ptr<CMessage> CMessages::append_empty() {
  auto message = std::make_shared<CMessage>(owner_, this, nullptr, 0);
  message->SetBody({});
  before_change();
  items_.push_back(Entry(message));
  is_edited_ = true;
  return message;
}

void CMessages::append(const std::shared_ptr<CMessage>& message, Carries line) {
  if (parent_ != nullptr) {
    parent_->load_parts();
  } else {
    message->make_missing_separator_line();
  }
  before_change();
  items_.push_back(Entry(message));
  try {
    // Behind everything else that can fail: a part that is not added leaves its parent as it was.
    const bool takes_delimiter = line == Carries::the_delimiter;
    if (parent_ != nullptr) parent_->become_multipart_for_added_part(takes_delimiter ? message.get() : nullptr);
  } catch (...) {
    items_.pop_back();
    throw;
  }
  is_edited_ = true;
}

void CMessages::Remove(const CMessage& message) {
  const std::int64_t position = position_of(message);
  if (position < 0) throw Error(Status::invalid_argument);
  object_at(static_cast<std::size_t>(position))->leave_tree();
  before_change();
  remember_removed(items_[static_cast<std::size_t>(position)]);
  items_.erase(static_cast<std::size_t>(position));
  mark_changed(owner_);
}

void CMessages::RemoveAll() {
  leave_trees();
  before_change();
  for (const Entry& entry : items_) remember_removed(entry);
  items_.clear();
  mark_changed(owner_);
}

void CMessages::leave_trees() {
  std::vector<std::shared_ptr<CMessage>> ways;
  append_ways_down(ways);
  for (const std::shared_ptr<CMessage>& message : ways) message->leave_tree();
}

void CMessages::remember_removed(const Entry& entry) {
  is_edited_ = true;
  if (entry.has_separator()) removed_positions_.push_back(entry.start());
  if (entry.object()) removed_.push_back(entry.object());
}

bool CMessages::scan(const std::shared_ptr<platform::File>& file, std::int64_t from, std::int64_t limit) {
  before_change();
  file_ = file;
  return scan_range(from, limit).whole;
}

mailbox::ScanResult CMessages::split(const std::shared_ptr<platform::File>& file, std::int64_t from, std::int64_t limit,
                                     std::u16string_view delimiter) {
  struct DropLast {
    ~DropLast() {
      if (!items.empty()) items.pop_back();
    }
    mailbox::MadeOnUse<Entry>& items;
  };
  before_change();
  file_ = file;
  set_separator(std::u16string(delimiter));
  give_up_items();
  // Deliberate: without a closing delimiter the last part is lost; see
  // without_its_closing_delimiter_a_message_loses_its_last_part.
  const DropLast also_when_memory_runs_out{items_};
  return scan_range(from, limit);
}

void CMessages::split(const std::shared_ptr<platform::File>& file, std::u16string_view delimiter,
                      const std::function<void(mailbox::ExtentSink&)>& find_parts,
                      const std::shared_ptr<mailbox::PartTree>& tree) {
  // Put together first: when memory runs out, nothing was split.
  mailbox::MadeOnUse<Entry> items;
  EntrySink sink(items);
  find_parts(sink);
  std::u16string separator(delimiter);
  before_change();
  file_ = file;
  set_separator(std::move(separator));
  give_up_items();
  tree_ = tree;
  items_ = std::move(items);
}

mailbox::ScanResult CMessages::scan_range(std::int64_t from, std::int64_t limit) {
  scanned_separator_ = platform::process_bytes(separator_);
  EntrySink sink(items_);
  return mailbox::scan(*file_, from, limit, scanned_separator_, sink);
}

void CMessages::check_positions() const {
  // A removed message counts as well: where it did not begin at its position, its neighbours' bytes are not what they
  // seem.
  for (const std::int64_t position : removed_positions_) check_position(position);
  for (const Entry& entry : items_) {
    if (entry.has_separator()) check_position(entry.start());
  }
}

void CMessages::write_mailbox(platform::ByteSink& sink) {
  check_positions();
  before_change();
  // What was removed may be held by a client, or be in another mailbox, and is read from the file that is about to go.
  for (const std::weak_ptr<CMessage>& removed : removed_) {
    if (const std::shared_ptr<CMessage> message = removed.lock()) message->load_tree(true);
  }
  write(sink);
}

void CMessages::check_position(std::int64_t position) const {
  // The line end before it counts as well, where there is one: the same letters inside a line begin no message.
  const std::string expected = (position > 0 ? "\n" : "") + scanned_separator_;
  std::string bytes(expected.size(), '\0');
  const std::size_t got = file_->read(position > 0 ? position - 1 : 0, bytes.data(), bytes.size());
  if (got != bytes.size() || bytes != expected) {
    throw std::system_error(std::make_error_code(std::errc::io_error), "no message begins where one was found");
  }
}

void CMessages::write(platform::ByteSink& to) {
  mailbox::LineSink sink(to);
  for (const Entry& entry : items_) {
    sink.end_line();
    if (!entry.object()) {
      new_object(entry)->write(sink, CMessage::Place::alone, false);
      continue;
    }
    // What a client holds stays in memory afterwards, since the file it was read from is about to be replaced.
    const bool keeps = entry.object().use_count() > 1 || entry.object()->has_held_parts();
    const std::shared_ptr<CMessage> message = entry.object();
    const CMessage::Held before = message->held();
    message->write(sink, CMessage::Place::alone, keeps);
    if (!keeps) message->drop_what_walking_read(before);
  }
  if (!items_.empty()) sink.write(platform::kLineEnd);
}

}  // namespace vellobar
