// IvMessages: the messages of a mailbox, or the parts of a message.
#include "mailbox/messages.h"

#include "automation/core_object.h"
#include "automation/enumerator.h"
#include "automation/objects.h"
#include "mailbox/message.h"

namespace vellobar::automation {

namespace {

class MessagesObject final : public CoreObject<MessagesObject, IvMessages, CMessages> {
 public:
  using CoreObject::CoreObject;

  STDMETHODIMP get_Count(short* value) override { return get(value, &CMessages::Count); }
  STDMETHODIMP get_Item(short index, IvMessage** value) override {
    return answer(value, [&] { return core().Item(index); });
  }
  STDMETHODIMP Add(VARIANT filename, IvMessage** result) override {
    return perform(result, [&] { return add(filename); });
  }
  STDMETHODIMP Remove(IvMessage* message) override {
    return guarded([&] {
      const auto wanted = message_behind(message);
      if (!wanted) throw Error(Status::invalid_argument);
      core().Remove(*wanted);
    });
  }
  STDMETHODIMP RemoveAll() override { return call(&CMessages::RemoveAll); }
  STDMETHODIMP get__NewEnum(IUnknown** value) override { return new_enumerator<CMessage>(core(), value); }

 private:
  std::shared_ptr<CMessage> add(const VARIANT& filename) {
    IDispatch* object = nullptr;
    if (holds_object(filename, object)) {
      const auto message = message_behind(object);
      core().Add(message);
      return message;
    }
    const auto name = string_in(filename);
    return name ? core().Add(*name) : core().Add();
  }
};

}  // namespace

ComPtr<IvMessages> wrap(const std::shared_ptr<CMessages>& messages) { return MessagesObject::of(messages); }

ComPtr<IUnknown> new_messages() { return query<IUnknown>(wrap(std::make_shared<CMessages>()).get()); }

}  // namespace vellobar::automation
