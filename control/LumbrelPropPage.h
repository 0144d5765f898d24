// The control's one property page, "General": dialog 201 with a note and no
// bound property. Its Apply has nothing to write.
#pragma once

#include "framework/ole/PropertyPage.h"

class CLumbrelPropPage : public framework::ole::PropertyPage {
public:
    CLumbrelPropPage();
};
