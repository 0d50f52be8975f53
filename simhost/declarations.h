// Reading the method declarations a plug-in registers, as the host's compiler
// would: which method a declaration names, with which parameter and result
// types, and the default value of a parameter. Matching by signature rather than
// by exact text finds the same method in every registration form a plug-in
// chooses for a host version (class extension, older layout, module of global
// methods).
#pragma once

#include <optional>
#include <string>

namespace simhost {

// Name, parameter types and result type, lower-cased where the host language
// ignores case, without parameter names, defaults or the extended object of a
// module's global method. "RotateQLM(extends ref as Picture, angle as double,
// background as color = &cFFFFFFFF) as picture" and "RotateQLM(angle as double,
// background as color = &cFFFFFF) as picture" both give
// "RotateQLM(double,color)picture".
std::string DeclarationSignature(const std::string& declaration);

// The text after "=" of the named parameter ("&cFFFFFFFF"); empty when the
// parameter is missing or has no default.
std::optional<std::string> ParameterDefault(const std::string& declaration, const std::string& parameter);

}  // namespace simhost
