// An object that is set up from a key text. The thumbnail library is one;
// the key says where its settings would be kept.
#pragma once

#include <string>

#include "foundation/resstr.h"

namespace thumbnails {

// The string table entry that the base class gives as its key.
constexpr long kKeyedObjectKeyString = 6049;

class CKeyedObject {
public:
    virtual ~CKeyedObject();
    CKeyedObject(const CKeyedObject&) = delete;
    CKeyedObject& operator=(const CKeyedObject&) = delete;

    // The resource string kKeyedObjectKeyString, loaded at the first call.
    virtual std::string GetKey();
    virtual void LoadFromKey(const std::string& key) = 0;
    virtual void InitFromKey(const std::string& key) = 0;

    // LoadFromKey and InitFromKey with GetKey's text.
    void Load();
    void Init();

protected:
    CKeyedObject();

private:
    foundation::CResString keyText_;
};

}  // namespace thumbnails
