// Visibility of the members of an exported class. The platform runtime and the plug-in export whole
// classes (their interface); DMR_CMN_HIDDEN on a private member function keeps it out of the library's
// dynamic symbol table all the same, so that a host can link only against what it may call and the
// library may change its private parts without breaking a host.
#ifndef DMR_CMN_VISIBILITY_H_
#define DMR_CMN_VISIBILITY_H_

#define DMR_CMN_HIDDEN __attribute__((visibility("hidden")))

#endif  // DMR_CMN_VISIBILITY_H_
