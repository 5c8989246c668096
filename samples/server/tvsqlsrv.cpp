// "tvsqlsrv.so": the SQL part of the server, loaded by kalmo when it starts to serve.

extern "C" const char* tvsqlsrv_Dialect() {
    return "SQL-92";
}
