#include "f95mini/scope.h"

#include <algorithm>

namespace f95mini {

Symbol* Scope::find_local(const std::string& name) {
  auto it = symbols.find(name);
  return it == symbols.end() ? nullptr : it->second.get();
}

Symbol* Scope::add(const std::string& name, const SourcePos& pos) {
  auto s = std::make_unique<Symbol>();
  s->name = name;
  s->pos = pos;
  s->owner = this;
  Symbol* p = s.get();
  symbols[name] = std::move(s);
  order.push_back(p);
  return p;
}

static bool visible(const UseClause& u, const std::string& name) {
  return !u.has_only || std::find(u.only.begin(), u.only.end(), name) != u.only.end();
}

Symbol* Scope::lookup(const std::string& name, bool* from_host) {
  if (from_host) *from_host = false;
  if (Symbol* s = find_local(name)) return s;
  for (const auto& u : uses) {
    if (!visible(u, name)) continue;
    if (Symbol* s = const_cast<Scope&>(u.module->scope).find_local(name)) return s;
  }
  if (host) {
    Symbol* s = host->lookup(name);
    if (s && from_host) *from_host = true;
    return s;
  }
  return nullptr;
}

const DerivedType* Scope::lookup_type(const std::string& name) {
  auto it = types.find(name);
  if (it != types.end()) return it->second.get();
  for (const auto& u : uses) {
    if (!visible(u, name)) continue;
    auto& t = u.module->scope.types;
    auto jt = t.find(name);
    if (jt != t.end()) return jt->second.get();
  }
  return host ? host->lookup_type(name) : nullptr;
}

bool Scope::implicit_type(const std::string& name, Type* t) const {
  if (implicit_none) return false;
  if (host && host->implicit_none) return false;
  char c = name.empty() ? 'a' : name[0];
  *t = (c >= 'i' && c <= 'n') ? integer_type(4) : real_type(4);
  return true;
}

}  // namespace f95mini
