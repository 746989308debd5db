#include "Gateway.h"

// The program file is called gateway.bin: without an extension Start() would end with
// std::out_of_range "basic_string::substr".
int main(int argc, char** argv)
{
    Gateway oGateway;
    return oGateway.Start(argc, argv);
}
