// Profiles as management programs work on them.
#ifndef ZAMOFIREWALL_PROFILE_H
#define ZAMOFIREWALL_PROFILE_H

#include <map>
#include <string>
#include <vector>

#include "zamofirewall/export.h"
#include "zamofirewall/profileDatabase.h"
#include "zamofirewall/ruleModel.h"

namespace FW {

// Results, errors, waiting times and threads are as for ZAMOFW_JSON_DB. Edits of every profile are
// not atomic as a whole: a failure leaves the profiles before it changed. An edit fails when a
// profile is renamed or deleted meanwhile.
class ZAMOFW_EXPORT ZAMOFW_PROFILE : public ZAMOFW_JSON_DB {
  public:
    bool profileEnum(std::map<std::string, FWPROFILE>& profiles);
    bool profileEnum(std::vector<std::string>& names);
    bool profileGet(const std::string& name, FWPROFILE& profile);
    bool profileSet(const std::string& name, const FWPROFILE& profile);
    bool profileExist(const std::string& name);
    bool profileCreate(const std::string& name);
    bool profileRename(const std::string& oldName, const std::string& newName);

    // Refuses the profile in force, and every profile while the settings cannot be read.
    bool profileDelete(const std::string& name);

    // A trial of an edited profile `name` works on a copy named ".test_" + `name`. The three
    // operations take the plain name; ZAMOFW::TestApplyingProfile() applies the copy.

    // Stores `profile` as the trial copy, replacing an earlier one.
    bool CreateTestProfile(std::string name, const FWPROFILE& profile);

    // Stores the trial copy's content as the profile. Neither removes the copy nor reloads.
    bool AdoptTestProfile(std::string name);

    // Deletes the trial copy, under the conditions of profileDelete().
    bool RemoveTestProfile(std::string name);

    // Adds `service` to the reserved-service rule at the head of the adapter's list, in every
    // profile. When the first rule is not an enabled reserved-service rule of that policy, a new
    // one is inserted. With `reload` the firewall is reloaded afterwards (ZAMOFW::fwReload()).
    bool profileAddServToReserve(const std::string& adapter,
                                 const std::string& service,
                                 FW_POLICY policy,
                                 bool reload);

    // Removes `service` from every rule of every profile, the user's own rules included; a rule
    // that names no service any more is removed. Never reloads.
    bool profileRemoveServ(const std::string& service);

    // Moves the rules and the default policy of an adapter to another name in every profile; what
    // the new name had is lost. With equal names they are removed. With `reload` the firewall is
    // reloaded when the default policy of the profile in force moved.
    bool profileChangeAdapter(const std::string& oldAdapter,
                              const std::string& newAdapter,
                              bool reload);
};

}  // namespace FW

#endif
