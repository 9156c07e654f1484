/* Two global integers that the reference CBLAS test programs expect from the
 * CBLAS library they were linked with (layout flag of the current call and a
 * marker for calls that come from C). They are test-harness state, not part
 * of the NXL library; this object is preloaded when the programs run. */
int RowMajorStrg = 0;
int CBLAS_CallFromC = 0;
