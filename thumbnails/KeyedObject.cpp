#include "thumbnails/KeyedObject.h"

namespace thumbnails {

CKeyedObject::CKeyedObject() : keyText_(kKeyedObjectKeyString) {}

CKeyedObject::~CKeyedObject() = default;

std::string CKeyedObject::GetKey() {
    return keyText_.GetText();
}

void CKeyedObject::Load() {
    LoadFromKey(GetKey());
}

void CKeyedObject::Init() {
    InitFromKey(GetKey());
}

}  // namespace thumbnails
