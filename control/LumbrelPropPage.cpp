#include "control/LumbrelPropPage.h"

#include "control/resource.h"

CLumbrelPropPage::CLumbrelPropPage()
    : framework::ole::PropertyPage(IDD_PROPPAGE_LUMBREL, IDS_LUMBREL_PPG_CAPTION) {}
