! Shows what would be changed to give the adapter lan0 an address: the C interface from Fortran 2008, by its standard
! module iso_c_binding alone.
module zelk_state
    use, intrinsic :: iso_c_binding
    implicit none

    interface
        function zelk_state_plan(desired, options, result, error) bind(c) result(code)
            import :: c_char, c_int, c_ptr
            character(kind=c_char), intent(in) :: desired(*)
            type(c_ptr), value :: options ! null for none
            type(c_ptr), intent(out) :: result, error
            integer(c_int) :: code
        end function

        subroutine zelk_state_free(text) bind(c)
            import :: c_ptr
            type(c_ptr), value :: text
        end subroutine

        function strlen(text) bind(c) result(length)
            import :: c_ptr, c_size_t
            type(c_ptr), value :: text
            integer(c_size_t) :: length
        end function
    end interface

contains

    !> A copy of a text that the DLL has given, which is freed.
    function take(text) result(copy)
        type(c_ptr), intent(in) :: text
        character(len=:), allocatable :: copy
        character(kind=c_char), pointer :: bytes(:)
        integer(c_size_t) :: i

        call c_f_pointer(text, bytes, [strlen(text)])
        allocate (character(len=size(bytes)) :: copy)
        do i = 1, size(bytes)
            copy(i:i) = bytes(i)
        end do
        call zelk_state_free(text)
    end function
end module

program plan_state
    use, intrinsic :: iso_fortran_env, only: error_unit
    use zelk_state
    implicit none

    type(c_ptr) :: result, error
    integer(c_int) :: code
    character(len=64) :: address

    call get_command_argument(1, address)
    code = zelk_state_plan('{"adapters": [{"adapter": "lan0", "ipv4": {"addresses": ["' // trim(address) // '"]}}]}' &
                           // c_null_char, c_null_ptr, result, error)
    if (c_associated(result)) then
        print '(a)', take(result)
    else
        write (error_unit, '(a)') take(error)
    end if
    stop code, quiet=.true.
end program
