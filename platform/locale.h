#pragma once

namespace Tools::Platform {

// The primary language of the user's default locale, by Windows' number. Elsewhere the variables
// LC_ALL and LANG tell, in this order, and languages beyond German, Czech and Slovak are 0.
unsigned primaryLanguage();

}
