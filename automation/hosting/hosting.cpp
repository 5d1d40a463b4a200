#include "automation/hosting/hosting.h"

namespace vellobar::automation {

// Beside each interface stand those that it extends.
const Hosting::Row Hosting::kRows[] = {
    {IID_IPersist, interface_of<&Hosting::persistence_, IPersistStreamInit>},
    {IID_IPersistStreamInit, interface_of<&Hosting::persistence_, IPersistStreamInit>},
    {IID_IPersistStorage, interface_of<&Hosting::persistence_, IPersistStorage>},
    {IID_IOleObject, interface_of<&Hosting::embedding_, IOleObject>},
    {IID_IOleControl, interface_of<&Hosting::embedding_, IOleControl>},
    {IID_IQuickActivate, interface_of<&Hosting::embedding_, IQuickActivate>},
    {IID_ISpecifyPropertyPages, interface_of<&Hosting::embedding_, ISpecifyPropertyPages>},
    {IID_IOleWindow, interface_of<&Hosting::in_place_, IOleInPlaceObjectWindowless>},
    {IID_IOleInPlaceObject, interface_of<&Hosting::in_place_, IOleInPlaceObjectWindowless>},
    {IID_IOleInPlaceObjectWindowless, interface_of<&Hosting::in_place_, IOleInPlaceObjectWindowless>},
    {IID_IOleInPlaceActiveObject, interface_of<&Hosting::in_place_, IOleInPlaceActiveObject>},
    {IID_IViewObject, interface_of<&Hosting::view_, IViewObjectEx>},
    {IID_IViewObject2, interface_of<&Hosting::view_, IViewObjectEx>},
    {IID_IViewObjectEx, interface_of<&Hosting::view_, IViewObjectEx>},
    {IID_IDataObject, interface_of<&Hosting::view_, IDataObject>},
    {IID_IConnectionPointContainer, interface_of<&Hosting::notifications_, IConnectionPointContainer>},
};

Hosting::Hosting(IUnknown& control, CVellobar& core)
    : persistence_(control, core, advice_),
      in_place_(control),
      view_(control, in_place_),
      notifications_(control, core),
      embedding_(control, {advice_, persistence_, notifications_, view_, in_place_}) {}

const Hosting::Row* Hosting::row_of(REFIID interface_id) {
  for (const Row& row : kRows) {
    if (row.interface_id == interface_id) return &row;
  }
  return nullptr;
}

IUnknown* Hosting::find(REFIID interface_id) {
  const Row* row = row_of(interface_id);
  return row != nullptr ? row->of(*this) : nullptr;
}

}  // namespace vellobar::automation
