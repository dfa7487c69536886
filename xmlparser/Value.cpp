#include "xmlparser/Value.h"

namespace Xml {

void Value::Set(const wchar_t* text) {
  m_container.DeleteChildren();
  m_container.AddText(text);
}

}  // namespace Xml
