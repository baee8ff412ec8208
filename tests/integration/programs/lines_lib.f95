! Linked at build time by the lines program.
subroutine lib_add(total)
  integer :: total
  total = total + 100
  call lib_report(total)
end subroutine lib_add

subroutine lib_report(total)
  integer :: total
  print *, 'lib total', total
end subroutine lib_report
