// SPDX-License-Identifier: MIT
//
// Which object stands for a system handle.
#pragma once

#include <map>
#include <memory>

// Permanent entries are objects that own their handle; temporary ones are made
// on demand for handles that no object of ours owns, and live until the
// outermost message loop is idle; they never free the handle. Used from the
// user-interface thread only.
template <typename Handle, typename Object>
class CHandleMap {
 public:
  void SetPermanent(Handle handle, Object* object) {
    m_temporary.erase(handle);
    m_permanent[handle] = object;
  }
  void RemovePermanent(Handle handle) { m_permanent.erase(handle); }

  Object* LookupPermanent(Handle handle) const {
    const auto found = m_permanent.find(handle);
    return found != m_permanent.end() ? found->second : nullptr;
  }

  // The permanent object, else the temporary one, made by make(handle) if
  // there is none yet. Null for a null handle.
  template <typename Make>
  Object* FromHandle(Handle handle, Make make) {
    if (handle == nullptr) return nullptr;
    if (Object* object = LookupPermanent(handle)) return object;
    auto& temporary = m_temporary[handle];
    if (temporary == nullptr) temporary.reset(make(handle));
    return temporary.get();
  }

  void DropTemporary(Handle handle) { m_temporary.erase(handle); }
  void DeleteTemporary() { m_temporary.clear(); }

  size_t PermanentCount() const { return m_permanent.size(); }
  size_t TemporaryCount() const { return m_temporary.size(); }

 private:
  struct ForgetHandleAndDelete {
    void operator()(Object* object) const {
      object->ForgetHandle();
      delete object;
    }
  };

  std::map<Handle, Object*> m_permanent;
  std::map<Handle, std::unique_ptr<Object, ForgetHandleAndDelete>> m_temporary;
};
