// dax_soak [--cluster] [MINUTES]: authors at work for so long, else one minute. Ends with 1, and what is wrong, when
// anything is.
#include "soak/Soak.h"

#include <cstdlib>
#include <iostream>

int main(int count, char** arguments) {
    const bool isOnCluster = count > 1 && std::string_view(arguments[1]) == "--cluster";
    const int known = isOnCluster ? 2 : 1;
    const double minutes = count > known ? std::atof(arguments[known]) : 1;
    if (minutes <= 0 || count > known + 1) {
        std::cerr << "dax_soak [--cluster] [MINUTES]\n";
        return 2;
    }
    try {
        const dax::soak::Result result = dax::soak::Run(0, minutes, isOnCluster);
        for (const std::string& fault : result.faults) std::cout << fault << "\n";
        std::cout << result.summary << std::endl;
        return result.faults.empty() ? 0 : 1;
    } catch (const std::exception& error) {
        std::cerr << error.what() << std::endl;
        return 1;
    }
}
