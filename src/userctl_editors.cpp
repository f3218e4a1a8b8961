// UserCtl, the openers of the editors and wizards: the user's properties, the new user, and
// the mobile user's, also when the studio asks for them.

#include "userctl.h"

void UserCtl::addButtonClicked() {}

void UserCtl::userEditFinished() {}

void UserCtl::showUserProperties() {}

void UserCtl::cancelChanged() {}

void UserCtl::addMobileButtonClicked() {}

void UserCtl::showMobileUserProperties() {}

void UserCtl::showNewMobileUserWizardsHandler(Command &) {}

void UserCtl::showMobileUserPropertiesHandler(Command &) {}
